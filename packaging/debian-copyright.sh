#!/bin/sh
# Writes Debian's machine-readable copyright file from LICENSE (MIT, which Debian calls Expat).
#   packaging/debian-copyright.sh LICENSE "Name <address>" > copyright
set -eu
license=$1
contact=$2
holder=$(sed -n 's/^Copyright (c) //p' "$license")
[ -n "$holder" ] || { echo "$0: no 'Copyright (c)' line in $license" >&2; exit 1; }
cat <<END
Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: HvTremolo
Upstream-Contact: $contact

Files: *
Copyright: $holder
License: Expat

License: Expat
END
# The licence text after its copyright line, one space in, empty lines as " .".
sed '1,/^Copyright (c) /d' "$license" | sed '/./,$!d' | sed 's/^$/./; s/^/ /'
