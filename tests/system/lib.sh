# What the scripts share: each is called with the folder of the programs, and works in a folder of its own.
set -euo pipefail
bin=$(cd "$1" && pwd)
support=$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)
work=$(mktemp -d)
processes=()
trap 'kill "${processes[@]}" 2> /dev/null || true; rm -rf "$work"' EXIT
cd "$work"
touch out err
# What nuvctl remembers of printers.
export XDG_CONFIG_HOME=$work XDG_CACHE_HOME=$work APPDATA=$work LOCALAPPDATA=$work

# start_nuvsim LOG OPTIONS...: and waits until it serves.
start_nuvsim() {
  "$bin/nuvsim" "${@:2}" > "$1" &
  processes+=("$!")
  "$support/wait_for_line.sh" '^ready' "$1"
}

failed=0
wrong() { printf 'WRONG: %s\n' "$*"; tail -n 5 out err; failed=1; }
# expect EXIT COMMAND...: what it writes is in out and err.
expect() {
  local exit=0
  "${@:2}" > out 2> err || exit=$?
  [ "$exit" = "$1" ] || wrong "exit $exit in place of $1: ${*:2}"
}
# holds CONDITION: of all the documents that nuvctl wrote, as a list. (Without -s, some versions of jq
# take no document at all for true.)
holds() { jq -es "$1" out > /dev/null || wrong "$1"; }
# same LINES FOLDER: the newest job there is these lines byte for byte.
same() { sed 's/$/\r/' "$1" | cmp - "$(find "$2" -type f -size +0 | sort | tail -n 1)" || wrong "the job differs"; }
finish() {
  [ "$failed" = 0 ] || exit 1
  echo "$1"
}
