#!/bin/sh
# Checks configuration files against the YANG modules of a folder. A file is in ConfD's load format: its root
# element is a wrapper that no module knows, so the wrapper is blanked out, line by line, before yanglint sees it;
# the line numbers in its messages are those of the file.
#
# Usage: validate_config.sh YANG_DIR CONFIG.xml...
# Exit status: 0 when every file is accepted, 1 when one is refused, 2 when the check could not be made.

set -u

program=$(basename "$0")
wrapper_namespace=http://tail-f.com/ns/config/1.0

fail() {
    echo "$program: $1" >&2
    exit 2
}

# Prints a file without its wrapper. Only the XML declaration, processing instructions and comments may stand
# around it.
strip_wrapper() {
    awk -v namespace="$wrapper_namespace" '
        function blank(markup) {
            gsub(/[^\n]/, "", markup)
            return markup
        }
        function first_line(markup) {
            return substr(markup, 1, index(markup "\n", "\n") - 1)
        }
        function refuse(reason) {
            print reason > "/dev/stderr"
            refused = 1
            exit 1
        }
        # Moves all of text up to and including mark to the output as blank lines; false when the mark is missing.
        function skip(mark,   at) {
            at = index(text, mark)
            if (!at) return 0
            out = out blank(substr(text, 1, at + length(mark) - 1))
            text = substr(text, at + length(mark))
            return 1
        }
        function skip_misc() {
            while (1) {
                match(text, /^[ \t\r\n]*/)
                out = out blank(substr(text, 1, RLENGTH))
                text = substr(text, RLENGTH + 1)
                if (text ~ /^<!--/) {
                    if (!skip("-->")) refuse("a comment has no end")
                } else if (text ~ /^<\?/) {
                    if (!skip("?>")) refuse("a processing instruction has no end")
                } else {
                    return
                }
            }
        }
        { text = text $0 "\n" }
        END {
            if (refused) exit 1
            skip_misc()
            if (text !~ /^<config[ \t\r\n>]/) refuse("the root element is not <config xmlns=\"" namespace "\">")
            start = substr(text, 1, index(text, ">"))
            if (!index(start, "\"" namespace "\"") && !index(start, "\047" namespace "\047"))
                refuse("the root element <config> is not in the namespace " namespace)
            skip(">")
            if (!match(text, /<\/config[ \t\r\n]*>/)) refuse("the root element <config> has no end tag")
            body = substr(text, 1, RSTART - 1)
            text = substr(text, RSTART)
            before = out
            out = ""
            skip(">")
            skip_misc()
            if (text != "") refuse("the root element must be the last, but there follows: " first_line(text))
            printf "%s%s%s", before, body, out
        }' "$1"
}

[ $# -ge 2 ] || fail "usage: $program YANG_DIR CONFIG.xml..."
yang_dir=$1
shift
command -v yanglint >/dev/null 2>&1 || fail "yanglint is not installed (Debian: libyang2-tools)"
ls "$yang_dir"/*.yang >/dev/null 2>&1 || fail "no YANG modules in $yang_dir"

work=$(mktemp -d) || fail "no temporary folder can be made"
trap 'rm -rf "$work"' EXIT
trap 'exit 2' HUP INT TERM

status=0
for config in "$@"; do
    [ -r "$config" ] || fail "$config cannot be read"
    if ! strip_wrapper "$config" >"$work/data.xml" 2>"$work/message"; then
        :
    elif yanglint -t config -p "$yang_dir" "$yang_dir"/*.yang "$work/data.xml" >"$work/message" 2>&1 &&
        [ ! -s "$work/message" ]; then
        continue
    fi
    echo "$program: $config is refused:" >&2
    grep -vF "$work/data.xml" "$work/message" >&2
    status=1
done
exit $status
