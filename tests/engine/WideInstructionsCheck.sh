#!/bin/sh
# Fails when a plug-in library holds a VEX-encoded (AVX) instruction outside the engine's
# wide loops, which only a processor with AVX2 ever reaches: anywhere else, one would
# stop the plug-in on a processor without AVX.
status=0
for library in "$@"; do
    found=$(objdump -d --no-show-raw-insn -C "$library" |
        awk '/^[0-9a-f]+ <.*>:$/ { name = $0; next }
             ($2 ~ /^v[a-z]/ || /%ymm/) && name !~ /<tw::wide::/ { print name }' | sort -u)
    if [ -n "$found" ]; then
        echo "$library: AVX instructions outside the wide loops, in:"
        echo "$found"
        status=1
    fi
    wide=$(objdump -d --no-show-raw-insn -C "$library" | grep -c '<tw::wide::.*>:$')
    if [ "$wide" -eq 0 ]; then
        echo "$library: no wide loops found; the check looked at nothing"
        status=1
    fi
done
exit $status
