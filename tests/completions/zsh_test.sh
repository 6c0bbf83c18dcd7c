#!/bin/sh
# zsh_test.sh PROGRAMS: what zsh offers for ruklog and ruklog-agentsim.
set -eu
here=$(realpath "$(dirname "$0")")
if ! command -v zsh >/dev/null; then
    echo "SKIPPED: no zsh here; the package zsh has it"
    exit 77
fi
for file in "$here"/../../completions/_*; do
    zsh -n "$file"
done
exec zsh -f "$here/offers.zsh" "$1"
