# What the scripts in the virtual machine share.
control_port=7000

# start_nuvsim OPTIONS...: and waits until it serves.
start_nuvsim() {
  nuvsim --control "$control_port" --usbip 3240 --no-discovery --job-dir /tmp/jobs "$@" \
    > /tmp/nuvsim.log 2>&1 &
  nuvsim_pid=$!
  wait_until grep -q '^ready' /tmp/nuvsim.log
}

# wait_until COMMAND...: for ten seconds at most.
wait_until() {
  local i
  for i in $(seq 200); do
    "$@" > /dev/null 2>&1 && return
    sleep 0.05
  done
  return 1
}

# control REQUEST: one line of JSON to the simulator; prints the answer.
control() {
  local answer
  exec 9<> "/dev/tcp/127.0.0.1/$control_port"
  printf '%s\n' "$1" >&9
  read -r -t 10 answer <&9
  exec 9>&-
  printf '%s\n' "$answer"
}

# fault PRINTER KEYS: arms a fault, the rest as in {"kind": "late", "ms": 5}.
fault() { control "{\"do\": \"fault\", \"printer\": $1, \"fault\": {$2}}" > /dev/null; }

# attach BUS_ID NODE: plugs a printer in and waits for its device node.
attach() {
  usbip attach --remote 127.0.0.1 --busid "$1" > /tmp/usbip.log 2>&1 &&
    wait_until test -c "$2"
}

# unplug PRINTER NODE, replug PRINTER BUS_ID NODE
unplug() {
  control "{\"do\": \"unplug\", \"printer\": $1}" > /dev/null
  wait_until test ! -e "$2"
}
replug() {
  control "{\"do\": \"replug\", \"printer\": $1}" > /dev/null
  attach "$2" "$3"
}

failures=0
# check WHAT COMMAND...: one line for each.
check() {
  local what=$1
  shift
  if "$@" > /tmp/check.log 2>&1; then
    echo "ok    $what"
  else
    echo "FAIL  $what"
    sed 's/^/      /' /tmp/check.log | head -n 20
    failures=$((failures + 1))
  fi
}
