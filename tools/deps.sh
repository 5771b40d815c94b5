#!/usr/bin/env bash
# Installs everything the build, the tests, the benchmarks and the fuzz targets need,
# on a fresh Debian 12 machine. Runs apt-get through sudo when not root.
set -euo pipefail
SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO=sudo; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends \
  cmake ninja-build g++ clang libclang-rt-14-dev pkg-config \
  zlib1g-dev libpng-dev libx11-dev libxext-dev libxtst-dev libsndfile1-dev libcurl4-openssl-dev \
  libfreetype-dev fonts-dejavu-core \
  libgtest-dev libgmock-dev libbenchmark-dev libcairo2-dev \
  xvfb xauth xdotool openbox imagemagick lsp-plugins-vst locales \
  lv2-dev sordi lilv-utils sox dpf-source \
  >/dev/null
# The hosts the formats are tried in: Ardour headless (ardour7-lua) for the LV2 bundle.
$SUDO apt-get install -y -qq --no-install-recommends ardour >/dev/null
# Hosts built on Qt or GTK run us under the user's locale: the tests run the editor under a
# comma-decimal one, which a fresh machine does not have until it is generated.
if ! locale -a 2>/dev/null | grep -qi '^de_DE\.utf-\?8$'; then
  $SUDO localedef -i de_DE -f UTF-8 de_DE.UTF-8
fi
