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

printf 'G1 X%s\n' 1 2 3 > lines
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines crown.nuv
expect 0 "$bin/send_with_progress" 127.0.0.1 crown.nuv
grep -qx 'the printer took it as job 1' out || wrong "the job"
grep -q '#\] 100 %' err || wrong "the bar"
echo no print file > damaged.nuv
expect 1 "$bin/send_with_progress" 127.0.0.1 damaged.nuv < /dev/null
grep -q 'damaged.nuv is damaged' err || wrong "the finding"

expect 0 "$bin/list_printers" 127.0.0.1
grep -Eqx '127.0.0.1 +HERE +Fabrix100 xP +idle' out || wrong "the row"
expect 0 "$bin/worker_beside_qt" 127.0.0.1
grep -qx idle out || wrong "the worker's answer"
expect 1 "$bin/worker_beside_qt" 127.0.0.1:6014
expect 1 "$bin/watch_ten" 0 127.0.0.1:6014
expect 0 "$bin/watch_ten" 2 127.0.0.1
grep -qx 'by the window: not printing' out || wrong "what was watched"
finish "the examples find printers, send a job, watch, and tell why not"
