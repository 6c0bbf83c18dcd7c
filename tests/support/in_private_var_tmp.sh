#!/bin/sh
# in_private_var_tmp.sh COMMAND...: runs a command with an empty /var/tmp of its own, where it can
# serve the Agent's fixed socket path and never meets an Agent of the host.  Where namespaces are
# refused the exit status is 77, which ctest counts as skipped.
set -eu
if [ "$(id -u)" -eq 0 ]; then
    namespaces=--mount
else
    namespaces='--user --map-root-user --mount'
fi
enter='mount -t tmpfs -o mode=1777 tmpfs /var/tmp && exec "$@"'
# Unquoted: several options.
# shellcheck disable=SC2086
if ! unshare $namespaces sh -c "$enter" sh true; then
    echo "SKIPPED: no private /var/tmp here, since namespaces are refused"
    exit 77
fi
# shellcheck disable=SC2086
exec unshare $namespaces sh -c "$enter" sh "$@"
