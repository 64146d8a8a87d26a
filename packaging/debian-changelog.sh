#!/bin/sh
# Writes the changelog in Debian's format from CHANGELOG.md: every "## VERSION - YYYY-MM-DD"
# section becomes an entry, each "- " item (with its wrapped lines) a "  * " item.
#   packaging/debian-changelog.sh CHANGELOG.md "Name <address>" > changelog
set -eu
changelog=$1
maintainer=$2
awk -v maintainer="$maintainer" '
function close_entry() {
    if (version == "") return
    command = "date -u -R -d " date
    command | getline stamp
    close(command)
    printf "\n -- %s  %s\n", maintainer, stamp
}
/^## / {
    close_entry()
    if (version != "") printf "\n"
    version = $2; date = $4
    if (date !~ /^[0-9][0-9][0-9][0-9]-[0-9][0-9]-[0-9][0-9]$/) {
        print "CHANGELOG.md: no date in: " $0 > "/dev/stderr"; exit 1
    }
    printf "hvtremolo (%s) unstable; urgency=medium\n\n", version
    next
}
version == "" { next }
/^- / { sub(/^- /, ""); gsub(/`/, ""); printf "  * %s\n", $0; next }
/^  +[^ ]/ { sub(/^ +/, ""); gsub(/`/, ""); printf "    %s\n", $0; next }
END { close_entry() }
' "$changelog"
