#!/bin/sh
# make_locales.sh DIRECTORY: locales for the tests that set one. Those that cannot be made here are left out, and
# their tests are skipped.
set -eu
directory=$1
mkdir -p "$directory"
command -v localedef > /dev/null || exit 0
for locale in de_DE tr_TR; do
    test -d "$directory/$locale.UTF-8" || localedef -i "$locale" -f UTF-8 "$directory/$locale.UTF-8" || true
done
test -d "$directory/tr_TR.ISO-8859-9" || localedef -i tr_TR -f ISO-8859-9 "$directory/tr_TR.ISO-8859-9" || true
