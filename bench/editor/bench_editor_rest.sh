#!/bin/bash
# The editor's cost to a host's GUI thread, as ratios in one run: Tidewake's editor open
# and idle, hidden (Ardour's way of closing a plug-in's window: the host's window hidden,
# the editor left open) and closed, beside LSP's Compressor Stereo the same three ways,
# all in `vst2host edit --ardour` (Ardour's editor thread: its events handed to the
# editor every millisecond, the idle call 20 times a second). The runs take turns, so
# that a machine that gets busier weighs on every case alike; each case's median counts.
#
#   bench/editor/bench_editor_rest.sh [build folder] [seconds per run] [rounds]
#
# Needs an X display: run it under xvfb-run -a -s "-screen 0 1280x1024x24".
set -euo pipefail
build=${1:-build}
seconds=${2:-10}
rounds=${3:-3}
host="$build/vst2host"
tidewake="$build/Tidewake.so"
lsp=/usr/lib/vst/lsp-plugins/compressor-stereo.so
[ -x "$host" ] && [ -f "$tidewake" ] || { echo "build $host and $tidewake first" >&2; exit 2; }
[ -f "$lsp" ] || { echo "LSP's Compressor Stereo is missing ($lsp): apt-get install lsp-plugins-vst" >&2; exit 2; }
# A home of its own: the editor keeps its startup bank there when it closes.
home=$(mktemp -d)
results=$(mktemp)
trap 'rm -rf "$home" "$results"' EXIT

cases="tidewake:open tidewake:hidden tidewake:closed lsp:open lsp:hidden lsp:closed"
for round in $(seq "$rounds"); do
    for c in $cases; do
        plugin=${c%%:*} state=${c#*:}
        so=$tidewake
        [ "$plugin" = lsp ] && so=$lsp
        flag=
        [ "$state" != open ] && flag=--$state
        # The line: "<name>: P s of CPU in S s with the editor <state> (..%); the host's GUI thread T s (..%)"
        line=$(HOME="$home" "$host" edit "$so" --ardour --no-audio --cpu --seconds "$seconds" $flag 2>/dev/null |
               grep "of CPU in") || { echo "$c: no measurement" >&2; exit 1; }
        process=$(sed -E 's/.*: ([0-9.]+) s of CPU.*/\1/' <<<"$line")
        thread=$(sed -E "s/.*GUI thread ([0-9.]+) s.*/\1/" <<<"$line")
        echo "$c $process $thread" >>"$results"
    done
done

median() {  # the median of column $2 for case $1
    awk -v c="$1" -v k="$2" '$1 == c { print $k }' "$results" | sort -g | awk '{ v[NR] = $1 } END {
        if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }'
}

printf '%-18s %14s %14s   (CPU seconds per %s s, median of %s runs)\n' case process "GUI thread" "$seconds" "$rounds"
for c in $cases; do
    printf '%-18s %14.3f %14.3f\n' "$c" "$(median "$c" 2)" "$(median "$c" 3)"
done
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'; }
extra() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%+.3f", a - b }'; }
for k in 2 3; do
    what=process
    [ $k = 3 ] && what="GUI thread"
    to=$(median tidewake:open $k) th=$(median tidewake:hidden $k) tc=$(median tidewake:closed $k)
    lo=$(median lsp:open $k) lc=$(median lsp:closed $k)
    echo "$what: Tidewake open / LSP open $(ratio "$to" "$lo");" \
         "over no editor: Tidewake open $(extra "$to" "$tc") s, hidden $(extra "$th" "$tc") s, LSP open $(extra "$lo" "$lc") s;" \
         "hidden / closed $(ratio "$th" "$tc")"
done
# How much the runs of one case spread: what "within noise" means here.
for c in tidewake:closed tidewake:hidden; do
    echo "$c GUI thread, all runs: $(awk -v c="$c" '$1 == c { printf "%s ", $3 }' "$results")"
done
