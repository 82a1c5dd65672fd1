#!/bin/bash
# tools/wine-run is transparent: output, input and exit code pass through, and its pipes close when the program ends.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
run=$ROOT/tools/wine-run

status=0
"$run" cmd /c 'exit 7' || status=$?
((status == 7)) || die "exit code $status, not 7"

output=$(timeout 60 "$run" cmd /c 'echo out& echo err 1>&2' 2>/dev/null) || die "the output stayed open"
[[ $output == out* && $output != *err* ]] || die "standard output: $output"
output=$(timeout 60 "$run" cmd /c 'echo out& echo err 1>&2' 2>&1 >/dev/null) || die "the error output stayed open"
[[ $output == err* ]] || die "standard error: $output"

output=$(echo 'echo read %OS% here' | timeout 60 "$run" cmd)
[[ $output == *'read Windows_NT here'* ]] || die "standard input: $output"

status=0
"$run" ./no-such-program.exe 2>/dev/null || status=$?
((status != 0)) || die "a missing program was no error"
