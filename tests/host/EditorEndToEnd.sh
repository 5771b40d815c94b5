#!/usr/bin/env bash
# The editor end to end, as a user works with it: the real plug-in in the command-line
# host's editor under a virtual X server of its own, driven by synthetic mouse and keys
# (xdotool). After each gesture it checks what the host heard (`vst2host edit --trace`:
# gestures, automation, display updates) or what the screen shows. Last, a snapshot of the
# editor is compared with the committed screenshot, so that an accidental change of the
# face is caught.
#
# usage: EditorEndToEnd.sh <vst2host> <Tidewake.so> <screenshot.png>
set -euo pipefail
vst2host=$1 plugin=$2 screenshot=$3

for tool in xvfb-run xdotool import compare; do
    if ! command -v "$tool" >/dev/null; then
        echo "$tool is not installed: the editor's end-to-end run is skipped"
        exit 77
    fi
done
# A server of our own, so that the test never moves the pointer of a real desktop.
if [ -z "${TIDEWAKE_E2E_SERVER:-}" ]; then
    TIDEWAKE_E2E_SERVER=1 exec xvfb-run -a -s "-screen 0 1024x768x24 -nolisten tcp" bash "$0" "$@"
fi

work=$(mktemp -d)
host_pid=
cleanup() {
    if [ -n "$host_pid" ]; then kill "$host_pid" 2>/dev/null || true; fi
    rm -rf "$work"
}
trap cleanup EXIT
# The store, the startup bank and the user's patches go into a home of the test's own.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
unset XDG_DOCUMENTS_DIR
mkdir -p "$HOME"

fail() {
    echo "FAILED: $*"
    echo "--- what the host heard:"
    cat "$work/trace.txt"
    echo "--- the host's errors:"
    cat "$work/errors.txt"
    import -window root "$work/../editor-end-to-end-failure.png" 2>/dev/null || true
    exit 1
}

# Waits up to 5 s for a line of the trace that matches the extended regular expression,
# after the line count given (so that earlier lines don't count).
lines=0
wait_for() {
    local pattern=$1
    for _ in $(seq 100); do
        if tail -n +"$((lines + 1))" "$work/trace.txt" | grep -Eq -- "$pattern"; then
            lines=$(wc -l <"$work/trace.txt")
            return 0
        fi
        sleep 0.05
    done
    fail "the host never heard /$pattern/"
}

# The window's positions of the controls the test works with, in the editor's own pixels.
delay_knob="x y"
delay_value="x y"
menu_button="x y"
patch_name="x y"
next_patch="x y"

# Host index of a parameter from its name, as the host lists it.
index_of() { "$vst2host" info "$plugin" | sed -nE "s/^ *([0-9]+) +$1 .*/\\1/p" | head -1; }
delay=$(index_of "Delay Time")
[ -n "$delay" ] || fail "vst2host info lists no Delay Time"

"$vst2host" edit "$plugin" --no-audio --trace >"$work/trace.txt" 2>"$work/errors.txt" &
host_pid=$!
window=$(timeout 10 xdotool search --sync --name "^vst2host: Tidewake" | head -1) || fail "no editor window"
wait_for "^Tidewake: editor 525 x 475"
eval "$(xdotool getwindowgeometry --shell "$window")"
origin_x=$X origin_y=$Y
# Moves the pointer to a point of the editor given as "x y".
at() { set -- $1; xdotool mousemove $((origin_x + $1)) $((origin_y + $2)); }
click() { at "$1"; xdotool click 1; }

# A drag up the delay-time knob is one gesture: begin, a run of automation, end, all at
# the parameter's host index.
at "$delay_knob"
xdotool mousedown 1
for _ in $(seq 8); do
    xdotool mousemove_relative -- 0 -5
    sleep 0.02
done
xdotool mouseup 1
wait_for "^begin $delay\$"
wait_for "^automate $delay "
wait_for "^end $delay\$"
dragged=$(grep -E "^automate $delay " "$work/trace.txt" | tail -1)

# A click on its value opens text entry; what is typed is read as the human form.
click "$delay_value"
sleep 0.3
xdotool type --delay 30 "250 ms"
xdotool key Return
wait_for "^automate $delay [0-9.]+ \"250.00 ms\"\$"

# Undo from the main menu takes the delay time back to where it was before the drag
# (drag and typing change the same thing and are one step).
