#!/usr/bin/env bash
# The example in C# compiles, finds a printer, sends it a job and cancels one.
# Usage: csharp.sh BIN_FOLDER SOURCE LIBRARY_FOLDER
source=$(realpath "$2") libraries=$(realpath "$3")
. "$(dirname "${BASH_SOURCE[0]}")/../system/lib.sh"
export LD_LIBRARY_PATH=$libraries NUVFILE_LIBRARY=$libraries/libNuvFile.so
mcs -warnaserror -out:PrintJob.exe "$source"
start_nuvsim log --address 127.0.0.1 --serial SN1 --job-dir jobs
seq -f 'G1 X%g' 3 > lines
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines crown.nuv
expect 0 mono PrintJob.exe 127.0.0.1 crown.nuv
grep -qx 'SN1: state 0' out || wrong "the state"
grep -q '15 of 15' err || wrong "the progress"
same lines jobs
expect 1 mono PrintJob.exe 127.0.0.1:6014
grep -q 'no printer at 127.0.0.1:6014' err || wrong "the reason"
expect 1 mono PrintJob.exe 127.0.0.1 none.nuv
until "$bin/nuvctl" --address 127.0.0.1 status | grep -q idle; do sleep 0.2; done
seq -f 'G1 X%g' 200 > lines
expect 0 "$bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines crown.nuv
# Ctrl-C is a key of a terminal.
mkfifo keys
script -qefc 'mono PrintJob.exe 127.0.0.1 crown.nuv' out < keys > /dev/null 2> err &
host=$!
exec 5> keys
"$support/wait_for_line.sh" '^[1-9][0-9]* of' out
printf '\003' >&5
wait "$host" && wrong "a cancelled job is no success"
exec 5>&-
grep -q cancelled out || wrong "the outcome"
expect 0 "$bin/nuvctl" --address 127.0.0.1 status
grep -q idle out || wrong "the job is abandoned"
finish "the example in C# sends a job, and cancels one"
