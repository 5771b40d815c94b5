#!/usr/bin/env bash
# The LV2 bundle as hosts and tools see it: lv2_validate finds no error in its description,
# lilv lists its ports, UI and 16 presets, and lv2apply renders every factory program (its
# preset's port values) sample for sample as vst2host renders the VST build.
#
#   BundleChecks.sh BUNDLE VST2HOST VST_PLUGIN
set -uo pipefail
bundle=$1 vst2host=$2 vst=$3
for tool in lv2_validate lv2info lv2apply sox; do
  command -v "$tool" >/dev/null || { echo "$tool is not installed: skipped"; exit 77; }
done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }
uri=urn:marlinworks:tidewake

# A folder of its own on LV2_PATH, so that only this bundle is read, and a home of its own,
# so that no startup bank a user or an earlier run left decides the programs both builds start with.
mkdir -p "$work/lv2" "$work/home" && cp -r "$bundle" "$work/lv2/"
export LV2_PATH="$work/lv2" HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config"

out=$(cd "$work/lv2/Tidewake.lv2" && lv2_validate ./*.ttl 2>&1)
grep -q "Found 0 errors" <<<"$out" || { echo "$out" | grep -A4 "error"; fail "lv2_validate"; }
echo "ok: lv2_validate finds no error"

info=$(lv2info "$uri") || fail "lv2info"
grep -q "Has latency: *yes, reported by port 5" <<<"$info" || fail "latency port"
grep -q "$uri#ui" <<<"$info" && grep -q "X11UI" <<<"$info" || fail "the X11 UI"
[ "$(grep -c "^	Port [0-9]*:" <<<"$info")" = 25 ] || fail "25 ports"
presets=$(sed -n '/Presets:/,/^$/p' <<<"$info" | grep -c "MW \|Init Patch")
[ "$presets" = 16 ] || fail "16 presets, got $presets"
echo "ok: lv2info lists 25 ports, the latency, the UI and 16 presets"

sox -n -r 48000 -c 2 -b 32 -e floating-point "$work/in.wav" synth 1.5 pluck C3 pluck E4 gain -3 2>/dev/null ||
  fail "sox makes no input"
for program in $(seq 0 15); do
  preset=$(printf '%s#preset-%02d' "$uri" $((program + 1)))
  args=$(awk -v p="<$preset>" '$0 == p {on = 1; next} on && /^$/ {exit} on' "$work/lv2/Tidewake.lv2/presets.ttl" |
         grep -o 'lv2:symbol "[A-Za-z]*" ; pset:value [-0-9.e]*' | sed -E 's/lv2:symbol "([A-Za-z]*)" ; pset:value (.*)/-c \1 \2/')
  [ "$(wc -w <<<"$args")" = 57 ] || fail "preset $preset has not 19 port values"
  # lv2apply tells no transport: the VST render gets no time information either.
  "$vst2host" render "$vst" "$work/in.wav" --program "$program" --no-time --raw --tail 0 -o "$work/vst.wav" >/dev/null ||
    fail "vst2host render"
  # shellcheck disable=SC2086
  lv2apply -i "$work/in.wav" -o "$work/lv2.wav" $args "$uri" >/dev/null 2>&1 || fail "lv2apply of program $program"
  sox "$work/vst.wav" -t f32 "$work/vst.raw" 2>/dev/null
  sox "$work/lv2.wav" -t f32 "$work/lv2.raw" 2>/dev/null
  cmp -s "$work/vst.raw" "$work/lv2.raw" || fail "program $program sounds different through lv2apply"
done
echo "ok: every factory program renders the same samples through lv2apply and vst2host"
