#!/bin/sh
# Peak memory and time of the engine bench and of a whole real season
# autoplayed with posting, each in a scratch folder removed afterwards.
# Usage: bench/peak_memory.sh [path/to/tallyrink]
set -eu
bin=${1:-./build/tallyrink}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

measure() {
    label=$1
    shift
    /usr/bin/time -f "%e %U %S %M" -o "$scratch/time" "$@" >/dev/null
    read -r wall user sys kb <"$scratch/time"
    printf '%-22s %7s s wall %7s s user %6s s sys %7.1f MB peak\n' "$label" "$wall" "$user" "$sys" "$(echo "$kb / 1024" | bc -l)"
}

measure "bench (2000 games)" "$bin" bench
"$bin" import-season "$scratch/season" >/dev/null
measure "season autoplay" "$bin" --league "$scratch/season" autoplay --all --seed 2017 --quiet
