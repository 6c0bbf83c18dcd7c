#!/bin/sh
# in_locale.sh LOCALES LOCALE COMMAND...: runs a command in a locale of its own making, kept in the
# folder LOCALES.  Where none can be made the exit status is 77, which ctest counts as skipped.
set -eu
locales=$1
locale=$2
shift 2
if ! command -v localedef >/dev/null || ! [ -d /usr/share/i18n/locales ]; then
    echo "SKIPPED: no localedef or no sources of locales here (Debian: locales)"
    exit 77
fi
if ! [ -d "$locales/$locale" ]; then
    mkdir -p "$locales"
    made=$(mktemp -d "$locales/made.XXXXXX")
    localedef -i "${locale%%.*}" -f "${locale#*.}" "$made/$locale"
    # Another test may have been quicker.
    mv -T "$made/$locale" "$locales/$locale" 2>/dev/null || [ -d "$locales/$locale" ]
    rm -rf "$made"
fi
# strerror stays in English: its text is the C library's, translated where the host has translations.
LOCPATH=$locales LANGUAGE=C LC_ALL=$locale exec "$@"
