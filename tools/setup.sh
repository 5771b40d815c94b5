#!/usr/bin/env bash
# The first command of the README: installs the dependencies, builds Tidewake, installs
# the plug-in and its factory patch folder into ~/.vst/ and renders the demo input
# through it into build/demo.wav.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)"
mkdir -p "$HOME/.vst"
# install replaces the file rather than writing into it, so that a host that has the old
# library loaded keeps running; the installed copy carries no debugging information.
install -s -m 0755 build/Tidewake.so "$HOME/.vst/Tidewake.so"
mkdir -p "$HOME/.vst/Tidewake Patches"
cp build/"Tidewake Patches"/*.tidewake "$HOME/.vst/Tidewake Patches/"
echo "installed $HOME/.vst/Tidewake.so and its factory patches"
build/vst2host render "$HOME/.vst/Tidewake.so" -o build/demo.wav
