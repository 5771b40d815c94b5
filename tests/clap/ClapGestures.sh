#!/usr/bin/env bash
# The editor's gestures as a CLAP host hears them: Tidewake.clap's editor in the command-line
# CLAP host under a virtual X server of its own, driven by synthetic mouse and keys
# (xdotool). A drag on the delay-time knob must reach the host as a gesture's begin, values
# and end for that parameter's id: through the flush the plug-in asks for while the host
# does not process (--no-audio), and through process while audio runs. A value typed into
# the knob's text entry arrives the same way.
#
# usage: ClapGestures.sh <claphost> <Tidewake.clap>
set -euo pipefail
claphost=$1 plugin=$2

for tool in xvfb-run xdotool; do
    if ! command -v "$tool" >/dev/null; then
        echo "$tool is not installed: the CLAP editor's gesture run is skipped"
        exit 77
    fi
done
if [ -z "${TIDEWAKE_CLAP_GESTURE_SERVER:-}" ]; then
    TIDEWAKE_CLAP_GESTURE_SERVER=1 exec xvfb-run -a -s "-screen 0 1024x768x24 -nolisten tcp" bash "$0" "$@"
fi

work=$(mktemp -d)
host_pid=
cleanup() {
    if [ -n "$host_pid" ]; then kill "$host_pid" 2>/dev/null || true; fi
    rm -rf "$work"
}
trap cleanup EXIT
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
unset XDG_DOCUMENTS_DIR
mkdir -p "$HOME"

fail() {
    echo "FAILED: $*"
    echo "--- what the host heard:"
    cat "$work/trace.txt"
    echo "--- the host's errors:"
    cat "$work/errors.txt"
    exit 1
}

# Waits up to 5 s for a line of the trace that matches the extended regular expression,
# after the line the last wait found.
lines=0
wait_for() {
    local pattern=$1 found
    for _ in $(seq 100); do
        found=$(tail -n +"$((lines + 1))" "$work/trace.txt" | grep -En -m1 -- "$pattern" | cut -d: -f1 || true)
        if [ -n "$found" ]; then
            lines=$((lines + found))
            return 0
        fi
        sleep 0.05
    done
    fail "the host never heard /$pattern/"
}

# The delay-time knob and its value, in the editor's own pixels.
delay_knob="312 116"
delay_value="312 150"

# The parameter's CLAP id, as the host lists it.
delay=$("$claphost" info "$plugin" | sed -nE 's/^ +[0-9]+  Delay Time .*\(id ([0-9]+),.*/\1/p')
[ -n "$delay" ] || { echo "claphost info lists no Delay Time"; exit 1; }

at() { set -- $1; xdotool mousemove $((origin_x + $1)) $((origin_y + $2)); }
drag_up() {
    at "$1"
    xdotool mousedown 1
    for _ in $(seq 8); do
        xdotool mousemove_relative -- 0 -5
        sleep 0.02
    done
    xdotool mouseup 1
}

# One run of the editor: $1 is how the gestures must come (flush or process), the rest
# the host's options.
session() {
    local way=$1
    shift
    lines=0
    "$claphost" edit "$plugin" --trace "$@" >"$work/trace.txt" 2>"$work/errors.txt" &
    host_pid=$!
    window=$(timeout 10 xdotool search --sync --name "^claphost: Tidewake" | head -1) || fail "no editor window"
    wait_for "^Tidewake: editor 525 x 475"
    eval "$(xdotool getwindowgeometry --shell "$window")"
    origin_x=$X origin_y=$Y

    drag_up "$delay_knob"
    wait_for "^begin $delay via $way\$"
    wait_for "^value $delay [0-9.]+ \".*\" via $way\$"
    wait_for "^end $delay via $way\$"
    # Only gestures on that parameter, and each begin ended.
    if grep -E "^(begin|value|end) " "$work/trace.txt" | grep -vqE "^(begin|value|end) $delay "; then
        fail "gestures on other parameters"
    fi

    at "$delay_value"
    xdotool click 1
    sleep 0.6
    xdotool type --delay 30 "250 ms"
    xdotool key Return
    wait_for "^value $delay [0-9.]+ \"250.00 ms\" via $way\$"

    kill -TERM "$host_pid"
    if ! wait "$host_pid"; then fail "the host did not end cleanly after closing the editor"; fi
    host_pid=
    begins=$(grep -cE "^begin $delay " "$work/trace.txt")
    ends=$(grep -cE "^end $delay " "$work/trace.txt")
    [ "$begins" = "$ends" ] || fail "$begins gestures began, $ends ended"
}

# The host inactive: the plug-in asks for a flush, and the gestures leave through it.
session flush --no-audio
grep -q "^request flush" "$work/trace.txt" || fail "the plug-in never asked for a flush"
# Audio running: the gestures leave through process, with no flush asked for.
session process
if grep -q "^request flush" "$work/trace.txt"; then fail "a flush was asked for while processing"; fi
echo "the host heard every gesture of the editor, by flush and by process"
