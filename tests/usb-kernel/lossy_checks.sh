# The library over a poor network. Three printers are another machine; in either direction of what lies
# between 5 % is lost, and all comes 40 ms late but a quarter, which overtakes the rest.
. /lib.sh
ends=(near far)
poor=(loss 5% delay 40ms reorder 25%)

far() { nsenter -t "$machine" -n "$@"; }
of() { if [ "$1" = far ]; then far "${@:2}"; else "${@:2}"; fi; }
connect_machine() {
  unshare -n sleep 1000 &
  machine=$!
  wait_until eval '[ "$(readlink /proc/$machine/ns/net)" != "$(readlink /proc/self/ns/net)" ]'
  /bin/ip link add near type veth peer name far netns "$machine"
  /bin/ip address add 10.77.1.1/24 broadcast + dev near
  for i in 2 3 4; do far /bin/ip address add "10.77.1.$i/24" broadcast + dev far; done
  far /bin/ip link set lo up
  for end in "${ends[@]}"; do
    of "$end" /bin/ip link set "$end" up
    of "$end" /bin/tc qdisc add dev "$end" root netem "${poor[@]}" || return 1
  done
  # A search asks the networks of the addresses that the host's name stands for.
  mkdir -p /etc && echo "10.77.1.1 host" > /etc/hosts && hostname host
  for i in 2 3 4; do wait_until ping -c 1 -W 1 "10.77.1.$i" || return 1; done
  # The simulator listens on networks that run, which the kernel says a moment later.
  for end in "${ends[@]}"; do wait_until eval 'of "$end" /bin/ip link show "$end" | grep -q "state UP"' || return 1; done
}
tcp_counter() {
  awk -v "name=$1" '/^TcpExt/ {for (i in at) if (at[i] == name) print $i; split($0, at)}' /proc/self/net/netstat
}
counted() {
  for end in "${ends[@]}"; do of "$end" /bin/tc -s qdisc show dev "$end"; done |
    sed -n 's/.* \([0-9]*\) pkt (dropped \([0-9]*\),.*/\1 \2/p' > /tmp/counted
  late=$(far bash -c "$(declare -f tcp_counter); tcp_counter TCPOFOQueue")
  cat /tmp/counted && awk '$2 >= 10 {++ends} END {exit ends != 2}' /tmp/counted && [ "$late" -gt 0 ]
}

# A search is one datagram and one answer, so it may miss a printer (3).
asks() {
  local status out=/tmp/out$BASHPID
  for _ in 1 2 3 4 5; do
    status=0
    timeout 100 nuvctl "$@" < /dev/null > "$out" 2>&1 || status=$?
    [ "$status" = 3 ] || break
  done
  cat "$out"
  return "$status"
}
tells() { asks "${@:2}" | tee /dev/stderr | grep -qxE "$1"; }
lists_what_is_there() {
  local status
  : > /tmp/listed
  for _ in 1 2 3 4 5; do
    status=0
    timeout 100 nuvctl list < /dev/null > /tmp/out || status=$?
    cat /tmp/out
    [ "$status" = 3 ] && continue
    [ "$status" = 0 ] || return 1
    sed '1d; s/^[0-9]* *//; s/  */ /g' /tmp/out | sort > /tmp/rows
    [ -z "$(uniq -d /tmp/rows)" ] && ! grep -vxFf /tmp/there /tmp/rows || return 1
    cat /tmp/rows >> /tmp/listed
  done
  [ "$(sort -u /tmp/listed | wc -l)" = 3 ]
}
# side_by_side COMMAND...: with each printer's number.
side_by_side() {
  local each=() failed=0
  for i in 0 1 2; do
    "$@" "$i" &
    each+=("$!")
  done
  for i in "${each[@]}"; do wait "$i" || failed=1; done
  return "$failed"
}
told_last() { wait_until told "$1" || wait_until told "$1"; }
told() { tail -n 1 /tmp/watched | grep -q "$1"; }
# It acknowledges nothing any more, so the system gives the connection up; otherwise it would be silent first.
# Switched on again, it knows of no connection.
switched_off_is_gone() {
  local watch switch failed=0
  nuvctl watch --json --address 10.77.1.4 --interval 1000 < /dev/null > /tmp/watched 2>&1 &
  watch=$!
  for _ in 1 2 3; do
    told_last '"printing"' || failed=1
    far /bin/tc qdisc change dev far root netem loss 100%
    told_last '"gone"' || failed=1
    for switch in unplug replug; do
      far bash -c ". /lib.sh; control '{\"do\": \"$switch\", \"printer\": 2}'"
    done
    far /bin/tc qdisc change dev far root netem "${poor[@]}"
  done
  told_last '"printing"' || failed=1
  kill "$watch"
  cat /tmp/watched
  echo "given up: $(tcp_counter TCPAbortOnTimeout)"
  [ "$(tcp_counter TCPAbortOnTimeout)" -gt 0 ] || failed=1
  return "$failed"
}
tells_the_truth() {
  far bash -c ". /lib.sh; control '{\"do\": \"state\", \"printer\": $1, \"to\": \"error\", \"number\": 4711$1}'"
  for _ in 1 2; do
    tells "Error number: +4711$1" status --serial "POOR$1" && tells "Firmware: +9.8.$1" info --serial "POOR$1" || return 1
  done
}
sends() { asks send "/tmp/job$1.nuv" --serial "POOR$1" && cmp /tmp/expected "/tmp/jobs/printer$1-job1.data"; }
jobs_arrive() {
  side_by_side sends || return 1
  for kind in key L102 L103; do cmp "/tmp/$kind" "/tmp/jobs/printer1-$kind.bin" || return 1; done
  for kind in L101 L102 L103; do cmp "/tmp/$kind" "/tmp/jobs/printer2-$kind.bin" || return 1; done
  cmp /tmp/preview.png /tmp/jobs/printer2-thumbnail.png
}

cat > /tmp/printers.json <<'JSON'
{"printers": [
  {"address": "10.77.1.2", "serial": "POOR0", "firmware": "9.8.0", "model": "Zafel Superfine", "nickname": "Lab one",
   "buffer": 8192, "drainRate": 20000},
  {"address": "10.77.1.3", "serial": "POOR1", "firmware": "9.8.1", "model": "BEGO VARSEO XS"},
  {"address": "10.77.1.4", "serial": "POOR2", "firmware": "9.8.2", "model": "Fabrix120 xP", "layerMs": 600000}]}
JSON
cat > /tmp/there <<'TEXT'
10.77.1.2 POOR0 Zafel Superfine Lab one
10.77.1.3 POOR1 BEGO VARSEO XS Simulated printer
10.77.1.4 POOR2 Fabrix120 xP Simulated printer
TEXT
# Lines of up to three segments.
awk 'BEGIN {for (n = 1; n <= 25; ++n) {line = "G1 X" n; while (length(line) < 997 * n % 4000) line = line " Y0.125"; print line}}' \
  > /tmp/lines
sed 's/$/\r/' /tmp/lines > /tmp/expected
head -c 32 /bin/nuvctl > /tmp/key
head -c 300 /bin/nuvctl > /tmp/L101
head -c 20000 /bin/nuvctl > /tmp/L102
head -c 1 /bin/nuvctl > /tmp/L103
{ printf '\x89PNG\r\n\x1a\n'; head -c 25000 /bin/nuvctl; } > /tmp/preview.png
records=(--l102 /tmp/L102 --l103 /tmp/L103)
create() { nuvfile create --machine-id "$@" > /tmp/nuvfile.log; }
create 3DPSNKG53WTW00001 /tmp/lines /tmp/job0.nuv
create 3DPSNKGB3WTW00001 --key-file /tmp/key "${records[@]}" /tmp/lines /tmp/job1.nuv
create 3DPSNKG43WTW00001 --l101 /tmp/L101 "${records[@]}" --preview /tmp/preview.png \
  /tmp/lines /tmp/job2.nuv

echo "--- 5 % lost, 40 ms late, out of order"
check "three printers are reached" connect_machine
far nuvsim --config /tmp/printers.json --control "$control_port" --job-dir /tmp/jobs > /tmp/nuvsim.log 2>&1 &
nuvsim_pid=$!
wait_until grep -q '^ready' /tmp/nuvsim.log
check "a search ends, and lists what is there only" lists_what_is_there
check "three jobs at once arrive byte for byte" jobs_arrive
check "a printer that is switched off is gone, and back" switched_off_is_gone
check "answers are right" side_by_side tells_the_truth
check "packets were lost and came late" counted
awk '{sent += $1; lost += $2} END {print "      of " sent " packets " lost " lost"}' /tmp/counted
echo "      $late segments out of order, $(wc -l < /tmp/listed) of 15 printers listed"
kill "$nuvsim_pid" "$machine"
[ "$failures" = 0 ]
