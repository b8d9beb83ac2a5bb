#!/usr/bin/env bash
# The examples over libnuvprinter do what they say.
# Usage: examples.sh BIN_FOLDER
. "$(dirname "${BASH_SOURCE[0]}")/../system/lib.sh"

start_nuvsim log --address 127.0.0.1 --serial HERE --model "Fabrix100 xP" --nickname "by the window"
expect 0 "$bin/find_printers" 127.0.0.1
grep -qx '127.0.0.1  HERE  Fabrix100 xP  "by the window"' out || wrong "the list"
expect 1 "$bin/find_printers" 127.0.0.1:6014
expect 1 "$bin/find_printers" nowhere
grep -q 'find_printers: "nowhere" is no address' err || wrong "the reason"
finish "the examples find a printer, and tell when there is none"
