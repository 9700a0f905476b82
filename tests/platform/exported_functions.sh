#!/bin/sh
# exported_functions.sh LIBRARY VERSION_SCRIPT: the shared library exports exactly the functions that the version script names,
# has the agreed SONAME, and takes its cryptography from libcrypto alone.
set -eu
library=$1
wanted=$(sed -n 's/^ *\([A-Za-z]*\);$/\1/p' "$2" | sort)
got=$(nm -D --defined-only "$library" | awk '{ print $3 }' | sort)
if [ "$wanted" != "$got" ]; then
    echo "exported functions differ from $2:"
    { echo "$wanted" | sed 's/^/wanted /'; echo "$got" | sed 's/^/got    /'; } | sort -k 2 | uniq -u -f 1
    exit 1
fi
readelf -d "$library" | grep -q 'SONAME.*\[libquillmark_platform\.so\.1\]' || { echo "wrong SONAME"; exit 1; }
readelf -d "$library" | grep -q 'NEEDED.*libcrypto' || { echo "does not use libcrypto"; exit 1; }
if readelf -d "$library" | grep 'NEEDED' | grep -q 'libssl'; then
    echo "needs libssl"
    exit 1
fi
