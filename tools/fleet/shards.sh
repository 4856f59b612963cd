# Shared by tools/fleet/parallel and tools/fleet/slurm: which shards of a plan are still to be done, and whether all are.
# Sourced by bash, with PLAN and PARTS set.

plan_id() { head -n 1 -- "$PLAN" | grep -o '"id":"[0-9a-f]\{64\}"' | grep -o '[0-9a-f]\{64\}'; }

# "shards":[[offset,inputs,bytes],...] is the only list of lists of three numbers on that line.
number_of_shards() { head -n 1 -- "$PLAN" | grep -o '\[[0-9]*,[0-9]*,[0-9]*\]' | wc -l; }

# A worker puts its part in place when it is whole: one that is there is done, unless it is of another plan.
done_shards() {
    find "$PARTS" -maxdepth 1 -name '*.part' -print0 |
        xargs -0 -r awk -v id="\"plan\":\"$(plan_id)\"" \
            'FNR == 1 { if (index($0, id)) print FILENAME; nextfile }' | sed 's|.*/||; s|\.part$||'
}

missing_shards() {
    awk -v shards="$(number_of_shards)" '{ done[$1] } END { for (i = 0; i < shards; ++i) if (!(i in done)) print i }' \
        <(done_shards)
}

check_plan() {
    if [ -z "$(plan_id)" ] || [ "$(number_of_shards)" = 0 ]; then
        printf '%s: %s is no plan of a fleet\n' "$0" "$PLAN" >&2
        exit 2
    fi
}

# The paths that workers get: absolute, for a node starts elsewhere.
take_paths() {
    PLAN=$(realpath -e -- "$1") || exit 2
    mkdir -p -- "$2"
    PARTS=$(realpath -e -- "$2")
    check_plan
}

tell_end() {
    local missing
    missing=$(missing_shards | wc -l)
    if [ "$missing" != 0 ]; then
        printf '%s of %s shards are not done; run the same command again to go on\n' "$missing" "$(number_of_shards)" >&2
        exit 1
    fi
    printf 'All %s shards are done. Next: %q fleet merge %q %q/*.part -o FLEET.db\n' "$(number_of_shards)" "$COMMAND" \
        "$PLAN" "$PARTS"
}
