#!/usr/bin/env bash
# The editor end to end, as a user works with it: the real plug-in in the command-line
# host's editor under a virtual X server of its own, driven by synthetic mouse and keys
# (xdotool). After each gesture it checks what the host heard (`vst2host edit --trace`:
# gestures, automation, display updates) or what the screen shows. Last, a snapshot of the
# editor is compared with the committed screenshot, so that an accidental change of the
# face is caught.
#
# usage: EditorEndToEnd.sh <vst2host> <Tidewake.so> <screenshot.png> [--ardour]
# With --ardour the host drives the editor as Ardour does (its events handed to the
# editor's _XEventProc, few idle calls). On a failure, the screen and the snapshot are
# left in the working folder.
set -euo pipefail
vst2host=$1 plugin=$2 screenshot=$3 mode=${4:-} pictures=$PWD

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
    import -window root "$pictures/editor-end-to-end-failure.png" 2>/dev/null || true
    exit 1
}

# Waits up to 5 s for a line of the trace that matches the extended regular expression,
# after the line the last wait found (so that the trace is read in order).
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

# The window's positions of the controls the test works with, in the editor's own pixels.
delay_knob="312 116"
delay_value="312 150"
menu_button="501 20"
patch_name="294 20"
next_patch="432 20"
# The patch menu opens at the click on the name: "Browse Patches...", a separator, then
# the factory patches in their folder's order, 20 pixels apart; the third is MW Dr Dub.
menu_dr_dub="340 100"
# The main menu opens under its button; these are its items, in the editor's pixels.
menu_undo="515 45"
menu_open="515 199"
menu_save="515 219"
menu_about="515 286"
# In the file dialog, in its own pixels: the jump to the user's patches, and OK (Open or Save).
dialog_user_patches="235 315"
dialog_ok="380 375"

# Host index of a parameter from its name, as the host lists it.
index_of() { "$vst2host" info "$plugin" | sed -nE "s/^ *([0-9]+) +$1 .*/\\1/p" | head -1; }
delay=$(index_of "Delay Time")
[ -n "$delay" ] || fail "vst2host info lists no Delay Time"

"$vst2host" edit "$plugin" --no-audio --trace $mode >"$work/trace.txt" 2>"$work/errors.txt" &
host_pid=$!
window=$(timeout 10 xdotool search --sync --name "^vst2host: Tidewake" | head -1) || fail "no editor window"
wait_for "^Tidewake: editor 525 x 475"
eval "$(xdotool getwindowgeometry --shell "$window")"
origin_x=$X origin_y=$Y
# Time for a menu, a text entry or a box to come up, generous for a loaded machine.
settle() { sleep 0.6; }
# Moves the pointer to a point of the editor given as "x y".
at() { set -- $1; xdotool mousemove $((origin_x + $1)) $((origin_y + $2)); }
click() { at "$1"; xdotool click 1; }
# Presses at the point, moves up 40 pixels in steps as a hand does, and lets go.
drag_up() {
    at "$1"
    xdotool mousedown 1
    for _ in $(seq 8); do
        xdotool mousemove_relative -- 0 -5
        sleep 0.02
    done
    xdotool mouseup 1
}
# Waits for the dialog of that title; dialog_click then clicks in its pixels.
in_dialog() {
    dialog=$(timeout 5 xdotool search --sync --name "^$1\$" | head -1) || fail "no dialog \"$1\""
    eval "$(xdotool getwindowgeometry --shell "$dialog")"
    dialog_x=$X dialog_y=$Y
    settle
}
dialog_click() {
    set -- $1
    xdotool mousemove $((dialog_x + $1)) $((dialog_y + $2)) click 1
}

# A drag up the delay-time knob is one gesture: begin, a run of automation, end, all at
# the parameter's host index.
drag_up "$delay_knob"
wait_for "^begin $delay\$"
wait_for "^automate $delay "
wait_for "^end $delay\$"
dragged=$(grep -E "^automate $delay " "$work/trace.txt" | tail -1)

# A click on its value opens text entry; what is typed is read as the human form.
click "$delay_value"
settle
xdotool type --delay 30 "250 ms"
xdotool key Return
wait_for "^automate $delay [0-9.]+ \"250.00 ms\"\$"

# Undo from the main menu takes back the typed value: the host is told to read the
# parameters again, and finds the delay time where the drag left it.
click "$menu_button"
settle
click "$menu_undo"
dragged_text=${dragged#*\"}
wait_for "^parameter $delay \"${dragged_text%\"}\"\$"

# The about box: a click on its item opens it over the face, a click anywhere closes it.
import -window "$window" "$work/before-about.png"
click "$menu_button"
settle
click "$menu_about"
sleep 0.8
import -window "$window" "$work/about.png"
click "262 40"
sleep 0.8
import -window "$window" "$work/after-about.png"
# Pixels that differ: most of the middle while the box is open, nearly none after.
differing() { compare -metric AE -fuzz 2% "$1" "$2" null: 2>&1 | cut -d' ' -f1 || true; }
opened=$(differing "$work/before-about.png" "$work/about.png")
closed=$(differing "$work/before-about.png" "$work/after-about.png")
[ "${opened%.*}" -gt 40000 ] || fail "the about box did not show ($opened pixels changed)"
[ "${closed%.*}" -lt 2000 ] || fail "the about box did not close ($closed pixels still differ)"

# The patch menu lists the factory folder; a choice loads that file, and the arrow then
# steps to the next file of the folder.
click "$patch_name"
settle
click "$menu_dr_dub"
wait_for '^display "MW Dr Dub"$'
click "$next_patch"
wait_for '^display "MW Educational VHS"$'

# Save..., in the user's patch folder, under the name it suggests: the file is written.
click "$menu_button"
settle
click "$menu_save"
in_dialog "Save Tidewake Patch"
dialog_click "$dialog_user_patches"
dialog_click "$dialog_ok"
saved="$HOME/Documents/Marlin Works/Tidewake User Patches/MW Educational VHS.tidewake"
for _ in $(seq 100); do [ -f "$saved" ] && break; sleep 0.05; done
[ -f "$saved" ] || fail "Save wrote no file at $saved"

# A drag changes the patch; Open... finds the saved file selected in its folder, and
# opening it gives the host the saved delay time back.
drag_up "$delay_knob"
wait_for "^automate $delay "
wait_for "^end $delay\$"
click "$menu_button"
settle
click "$menu_open"
in_dialog "Open Tidewake Patch"
dialog_click "$dialog_ok"
wait_for "^parameter $delay \"20.00 ms\"\$"

# From the keyboard. A click on the knob gives it the focus and the editor the keyboard
# (a press without a move: a gesture with nothing in it); Up is one gesture of one step,
# Ctrl+Z takes it back, and Tab goes on to the feedback knob, which Up then raises.
feedback=$(index_of "Feedback Amount")
click "$delay_knob"
wait_for "^end $delay\$"
xdotool key Up
wait_for "^begin $delay\$"
wait_for "^automate $delay "
wait_for "^end $delay\$"
xdotool key ctrl+z
wait_for "^parameter $delay \"20.00 ms\"\$"
xdotool key Tab Up
wait_for "^begin $feedback\$"
wait_for "^automate $feedback "
wait_for "^end $feedback\$"

# Closing: the host closes the editor and ends the plug-in as a host would.
kill -TERM "$host_pid"
if ! wait "$host_pid"; then fail "the host did not end cleanly after closing the editor"; fi
host_pid=
# What changed in the editor outlives it: the next instance starts with that patch.
"$vst2host" info "$plugin" | grep -Eq "^ +0  MW Educational VHS\$" ||
    fail "the next instance did not start with the patch the editor left"

# The face as committed: a snapshot of a fresh editor, in a fresh home, against the
# screenshot. Fonts and artwork are our own, drawn the same on every machine, so only a
# small part may differ.
export HOME=$work/fresh-home XDG_CONFIG_HOME=$work/fresh-home/.config XDG_DATA_HOME=$work/fresh-home/.local/share
mkdir -p "$HOME"
"$vst2host" snapshot "$plugin" "$work/snapshot.png" --no-audio --idle 5 $mode >/dev/null
changed=$(differing "$screenshot" "$work/snapshot.png")
if [ "${changed%.*}" -gt 500 ]; then
    cp "$work/snapshot.png" "$pictures/editor-end-to-end-snapshot.png"
    fail "the editor's face differs from $screenshot in $changed pixels"
fi
echo "the editor answered every gesture; its face matches $screenshot"
