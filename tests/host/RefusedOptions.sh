#!/bin/sh
# The command-line tools refuse every value they can't honour: a one-line message that
# names the option and the value, a non-zero exit, and no file written.
# Usage: RefusedOptions.sh <tidewake-render> <vst2host> <plugin.so>
render="$1" host="$2" plugin="$3"
scratch=$(mktemp -d) || exit 1
trap 'rm -rf "$scratch"' EXIT
failed=0

refuses() {
    want="$1"
    shift
    if "$@" -o "$scratch/out.wav" >"$scratch/said" 2>&1; then
        echo "accepted: $*"
        failed=1
    elif ! grep -qxF -- "$want" "$scratch/said"; then
        echo "for: $*"
        echo "  wanted: $want"
        echo "  said:   $(cat "$scratch/said")"
        failed=1
    fi
    if [ -e "$scratch/out.wav" ]; then
        echo "wrote a file: $*"
        failed=1
        rm -f "$scratch/out.wav"
    fi
}

for tool in tidewake-render vst2host; do
    if [ $tool = vst2host ]; then run="$host render $plugin"; else run="$render"; fi
    refuses "$tool: --tempo must be a number from 1 to 999: nan" $run --tempo nan
    refuses "$tool: --tempo must be a number from 1 to 999: inf" $run --tempo inf
    refuses "$tool: --tail must be a number from 0 to 600: -1" $run --tail -1
    refuses "$tool: --tail must be a number from 0 to 600: 1e12" $run --tail 1e12
    refuses "$tool: --note must be a whole number from 0 to 127: 60.5" $run --note 60.5
    refuses "$tool: --rate must be a whole number from $([ $tool = vst2host ] && echo 1000 || echo 8000) to $([ $tool = vst2host ] && echo 768000 || echo 384000): 0" $run --rate 0
done
refuses "tidewake-render: --program must be a whole number from 0 to 15: -1" "$render" --program -1
refuses "tidewake-render: --program must be a whole number from 0 to 15: 16" "$render" --program 16
refuses "vst2host: --program must be a whole number from 0 to 9999: -1" "$host" render "$plugin" --program -1
refuses "vst2host: no program 16" "$host" render "$plugin" --program 16
refuses "vst2host: --block must be a whole number from 1 to 65536: 0" "$host" render "$plugin" --block 0
exit $failed
