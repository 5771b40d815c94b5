#!/usr/bin/env bash
# Tidewake's LV2 bundle in Ardour 7, headless (ardour7-lua): the plug-in is found on the
# LV2 path, takes a factory preset from Ardour's preset list and a value from Ardour, and
# after the session is saved and reopened in a fresh process has the same values; a
# second save of the reopened session finds the plug-in's state (all 16 programs) unchanged.
#
#   ArdourSession.sh BUNDLE
set -uo pipefail
bundle=$1
command -v ardour7-lua >/dev/null || { echo "ardour7-lua is not installed: skipped"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }
mkdir -p "$work/lv2" "$work/home" && cp -r "$bundle" "$work/lv2/"
export HOME="$work/home" LV2_PATH="$work/lv2" XDG_CONFIG_HOME="$work/home/.config"

cat >"$work/save.lua" <<LUA
create_session("$work/session", "tw", 48000)
local track = Session:new_audio_track(2, 2, nil, 1, "T1", ARDOUR.PresentationInfo.max_order,
                                      ARDOUR.TrackMode.Normal, true):front()
local p = ARDOUR.LuaAPI.new_plugin(Session, "urn:marlinworks:tidewake", ARDOUR.PluginType.LV2, "")
assert(not p:isnil(), "Tidewake not found")
track:add_processor_by_index(p, 0, nil, true)
local plug = p:to_plugininsert():plugin(0)
print("found", plug:name())
assert(plug:load_preset(plug:preset_by_label("MW Dr Dub")), "the preset does not load")
-- Ardour counts the latency output among the controls: the wet mix is its 14th.
print("preset wet", ARDOUR.LuaAPI.get_processor_param(p, 13, true))
assert(ARDOUR.LuaAPI.set_processor_param(p, 13, 33.0))
local values = {}
for i = 1, 18 do values[#values + 1] = string.format("%.6g", ARDOUR.LuaAPI.get_processor_param(p, i, true)) end
print("values", table.concat(values, " "))
Session:save_state("", false, false, false, false, false)
close_session()
LUA
cat >"$work/reopen.lua" <<LUA
load_session("$work/session", "tw")
local p = Session:route_by_name("T1"):nth_plugin(0)
assert(not p:isnil(), "no plug-in after reopening")
local values = {}
for i = 1, 18 do values[#values + 1] = string.format("%.6g", ARDOUR.LuaAPI.get_processor_param(p, i, true)) end
print("values", table.concat(values, " "))
Session:save_state("", false, false, false, false, false)
close_session()
LUA

first=$(timeout 120 ardour7-lua "$work/save.lua" 2>&1) || { echo "$first"; fail "the first session"; }
grep -q "^found Tidewake" <<<"$first" || { echo "$first"; fail "Tidewake not found in ~/.lv2"; }
grep -q "^preset wet 50" <<<"$first" || { echo "$first"; fail "the preset MW Dr Dub (wet 50 %)"; }
echo "ok: Ardour finds Tidewake and loads the preset MW Dr Dub from its list"
before=$(grep "^values" <<<"$first")
grep -q " 33 " <<<"$before" || fail "the wet mix Ardour set: $before"

second=$(timeout 120 ardour7-lua "$work/reopen.lua" 2>&1) || { echo "$second"; fail "reopening"; }
after=$(grep "^values" <<<"$second")
[ "$before" = "$after" ] || fail "values changed by save and reopen: $before / $after"
echo "ok: after save and reopen in a fresh process every value is back"

count() { ls -d "$work"/session/plugins/*/state* | wc -l; }
states=$(count)
third=$(timeout 120 ardour7-lua "$work/reopen.lua" 2>&1) || { echo "$third"; fail "reopening again"; }
# Ardour writes a new state folder only when the plug-in's state differs from the last.
[ "$(count)" = "$states" ] || fail "the plug-in's state changed between two reopenings"
grep -q '#state> """' "$work"/session/plugins/*/state1/state.ttl || fail "no bank in the saved state"
echo "ok: the plug-in's state (bank and current program) comes back unchanged"
