#!/usr/bin/env bash
# `vst2host edit` ends on time, and on SIGTERM, while the editor holds a menu open in the
# host's idle call. Run under an X server of its own (xvfb-run).
# Usage: MenuLetsHostGo.sh <vst2host> <plugin.so> time|term
set -u
vst2host="$1" plugin="$2" how="$3"
command -v xdotool >/dev/null || { echo "xdotool is not installed"; exit 77; }
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
mkdir -p "$HOME"

# Ending on time: a few seconds; on SIGTERM: no end of its own.
seconds=4
[ "$how" = term ] && seconds=0
# The bound on the whole run: far beyond what either needs, so only a held host hits it.
timeout -s KILL 40 "$vst2host" edit "$plugin" --no-audio --seconds "$seconds" >"$work/said" 2>&1 &
host_pid=$!
window=$(timeout 10 xdotool search --sync --name "^vst2host: Tidewake" | head -1) || { echo "no editor window"; exit 1; }
for _ in $(seq 100); do grep -q "first frame" "$work/said" && break; sleep 0.05; done
eval "$(xdotool getwindowgeometry --shell "$window")"
# The main menu's button; the menu stays open from here on.
xdotool mousemove $((X + 501)) $((Y + 20)) click 1
sleep 1
[ "$how" = term ] && kill -TERM "$host_pid" 2>/dev/null
wait "$host_pid"
status=$?
if [ "$status" != 0 ]; then
    echo "vst2host ended with status $status (137: still held when the bound killed it)"
    cat "$work/said"
    exit 1
fi
echo "vst2host ended by itself ($how)"
