#!/usr/bin/env bash
# The first command of the README: installs the dependencies, builds Tidewake, installs
# each format with its factory patch folder, and renders the demo input through it into
# build/demo.wav. By default the VST 2.4 plug-in goes into ~/.vst/ (Bitwig, Reaper, Carla
# and Qtractor look there), the LV2 bundle into ~/.lv2/ and the CLAP plug-in into ~/.clap/;
# with --system they go into /usr/local/lib/lxvst/ (one of the folders Ardour searches
# without being told), /usr/local/lib/lv2/ and /usr/local/lib/clap/, for every user.
set -euo pipefail
cd "$(dirname "$0")/.."
target="$HOME/.vst"
lv2_target="$HOME/.lv2"
case "${1:-}" in
    "") ;;
    --system) target=/usr/local/lib/lxvst lv2_target=/usr/local/lib/lv2 ;;
    *) echo "usage: bash tools/setup.sh [--system]" >&2; exit 2 ;;
esac
bash tools/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)"
as_owner=()
if [ ! -w "$(dirname "$target")" ] && [ "$(id -u)" != 0 ]; then as_owner=(sudo); fi
"${as_owner[@]}" mkdir -p "$target/Tidewake Patches"
# install replaces the file rather than writing into it, so that a host that has the old
# library loaded keeps running; the installed copy carries no debugging information.
"${as_owner[@]}" install -s -m 0755 build/Tidewake.so "$target/Tidewake.so"
"${as_owner[@]}" install -m 0644 build/"Tidewake Patches"/*.tidewake "$target/Tidewake Patches/"
echo "installed $target/Tidewake.so and its factory patches"
# The bundle is replaced whole, its library without debugging information.
"${as_owner[@]}" mkdir -p "$lv2_target"
"${as_owner[@]}" rm -rf "$lv2_target/Tidewake.lv2"
"${as_owner[@]}" cp -r build/Tidewake.lv2 "$lv2_target/Tidewake.lv2"
"${as_owner[@]}" strip "$lv2_target/Tidewake.lv2/Tidewake.so"
echo "installed $lv2_target/Tidewake.lv2"
# The CLAP plug-in, with its own copy of the factory patches beside it.
clap_target="$HOME/.clap"
if [ "$target" != "$HOME/.vst" ]; then clap_target=/usr/local/lib/clap; fi
"${as_owner[@]}" mkdir -p "$clap_target/Tidewake Patches"
"${as_owner[@]}" install -s -m 0755 build/Tidewake.clap "$clap_target/Tidewake.clap"
"${as_owner[@]}" install -m 0644 build/"Tidewake Patches"/*.tidewake "$clap_target/Tidewake Patches/"
echo "installed $clap_target/Tidewake.clap and its factory patches"
if [ "$target" = "$HOME/.vst" ]; then
    echo "Ardour does not search ~/.vst by itself: add it under Preferences > Plugins > VST >" \
         "Linux VST Path, or run this again with --system"
fi
build/vst2host render "$target/Tidewake.so" -o build/demo.wav
