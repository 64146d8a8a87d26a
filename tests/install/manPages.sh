#!/bin/sh
# The manual pages cannot drift from the programs: every option a program's --help names is in
# its page, and each page renders without a warning from man.
#   manPages.sh MAN_DIR PROGRAM...   (the page of PROGRAM is MAN_DIR/NAME.1)
set -eu
man_dir=$1
shift

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

for program in "$@"; do
    name=$(basename "$program")
    page=$man_dir/$name.1
    # ASCII, no hyphenation and no justification: the options appear as typed.
    MANWIDTH=200 man --warnings -E ascii --nh --nj -l "$page" > "$scratch/page" 2> "$scratch/warnings" ||
        fail "$name: man cannot show $page"
    [ ! -s "$scratch/warnings" ] || fail "$name: man warns about $page: $(cat "$scratch/warnings")"

    # The usage text may go to either stream.
    "$program" --help > "$scratch/help" 2>&1 || true
    # An option starts a word: -x or --word, not the hyphen inside "electric-piano".
    options=$(grep -oE -- '(^|[^A-Za-z0-9_-])--?[A-Za-z][A-Za-z0-9-]*' "$scratch/help" |
              sed 's/^[^-]*//' | sort -u)
    [ -n "$options" ] || fail "$name: --help names no option: $(cat "$scratch/help")"
    for option in $options; do
        grep -qE -- "(^|[^A-Za-z0-9_-])$option([^A-Za-z0-9-]|\$)" "$scratch/page" ||
            fail "$name: $option is in --help but not in $page"
    done
    echo "$name: $(echo $options | wc -w) options of --help looked for in the page"
done
[ "$failures" = 0 ]
