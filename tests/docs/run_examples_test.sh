#!/usr/bin/env bash
# run_examples_test.sh PROGRAMS: the runner of examples notices what it is there to notice.
set -euo pipefail
programs=$1
here=$(realpath "$(dirname "$0")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

# expect STATUS NAME: runs the file on standard input and looks at the exit status.
expect() {
    local status=0
    cat >"$work/$2"
    "$here/run_examples.sh" "$work/$2" "$programs" >"$work/report" 2>&1 || status=$?
    if [ "$status" -ne "$1" ]; then
        printf '%s: exit status %s, expected %s\n' "$2" "$status" "$1"
        cat "$work/report"
        failures=$((failures + 1))
    fi
}

expect 0 right.md <<'TEXT'
<!-- run: agentsim --feed tests/docs/events.txt -->
```console
$ ruklog show last 2
Timestamp                  Entry CPU  Mod Lv         Message
Feb 29 23:59:59.999999        5 17   1   1   Error port 12 link lost
Jan 31 00:00:00.000000        6  0   6   8    Info port 12 link up at 10 Gbit/s
$ ruklog clear; ruklog show all
Cleared log
Timestamp                  Entry CPU  Mod Lv         Message
```
<!-- run: shell -->
```console
$ ruklog show info >/dev/null; echo $?
255
```
TEXT

expect 0 right.1 <<'TEXT'
.\" program: two.c
.Bd -literal
int main(void)
{
    return 2;
}
.Ed
.\" run: agentsim \-\-preload 1
.Bd -literal -offset indent
$ ruklog show tail
Press control\-C to interrupt this command.
Timestamp                  Entry CPU  Mod Lv         Message
Jan  1 00:00:00.000000        0  0   7   8    Info flow 0 added: port 0 to port 7
^C
$ ./two; echo $?
2
$ echo "\(aq\e\(ha"
\&\(aq\e\(ha
.Ed
TEXT

expect 1 wrong_text.md <<'TEXT'
<!-- run: agentsim -->
```console
$ ruklog clear
Cleared the log
```
TEXT

expect 1 wrong_number_of_an_entry.md <<'TEXT'
<!-- run: agentsim --preload 1 -->
```console
$ ruklog show all
Timestamp                  Entry CPU  Mod Lv         Message
Jan  1 00:00:00.000000        1  0   7   8    Info flow 0 added: port 0 to port 7
```
TEXT

expect 1 output_missing.md <<'TEXT'
<!-- run: agentsim -->
```console
$ ruklog clear
```
TEXT

expect 1 output_too_much.md <<'TEXT'
<!-- run: agentsim -->
```console
$ ruklog clear
Cleared log

```
TEXT

expect 1 first_of_two_wrong.md <<'TEXT'
<!-- run: agentsim -->
```console
$ ruklog stop
Suspended log
$ ruklog clear
Cleared log
```
TEXT

expect 1 tail_too_short.md <<'TEXT'
<!-- run: agentsim -->
```console
$ ruklog show tail
Press control-C to interrupt this command.
^C
```
TEXT

expect 1 unknown_option.md <<'TEXT'
<!-- run: agentsim --nonsense -->
```console
$ true
```
TEXT

expect 1 unknown_marker.md <<'TEXT'
<!-- run: something -->
```console
$ true
```
TEXT

expect 1 marker_without_block.md <<'TEXT'
<!-- run: agentsim -->
text
```console
$ true
```
TEXT

expect 1 block_without_command.md <<'TEXT'
<!-- run: shell -->
```console
true
```
TEXT

expect 1 block_without_end.md <<'TEXT'
<!-- run: shell -->
```console
$ true
TEXT

expect 1 program_does_not_compile.1 <<'TEXT'
.\" program: wrong.c
.Bd -literal
int main(void) { return x; }
.Ed
TEXT

expect 1 nothing_marked.md <<'TEXT'
```console
$ true
```
TEXT

[ "$failures" -eq 0 ]
