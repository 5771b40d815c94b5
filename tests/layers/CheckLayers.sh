#!/usr/bin/env bash
# The layer check catches every form an upward include can take: each case plants one
# offending line in a small tree of its own and expects the check to fail naming it, and
# the clean tree to pass.
set -uo pipefail
check=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

plant() {  # plant NAME FILE LINE [EXPECT]
  local name=$1 file=$2 line=$3 expect=${4:-fault}
  rm -rf "$work/tree" && mkdir -p "$work/tree"/{platform,engine,patch,editor,core,product}
  echo '#include "platform/Thing.h"' >"$work/tree/engine/Clean.cpp"
  mkdir -p "$work/tree/$(dirname "$file")"
  printf '%s\n' "$line" >>"$work/tree/$file"
  if out=$(bash "$check" "$work/tree" 2>&1); then got=pass; else got=fault; fi
  if [ "$got" != "$expect" ]; then
    echo "FAILED: $name: expected $expect, got $got"; echo "$out" | sed 's/^/    /'
    failures=$((failures + 1))
  elif [ "$expect" = fault ] && ! grep -q "$(dirname "$file")/" <<<"$out"; then
    echo "FAILED: $name: the fault does not name $(dirname "$file")/"; failures=$((failures + 1))
  else
    echo "ok: $name"
  fi
}

plant "clean tree"            engine/Ok.cpp    '#include "engine/Other.h"' pass
plant "quoted upward"         engine/A.cpp     '#include "editor/ModelController.h"'
plant "angled upward"         engine/B.cpp     '#include <core/Instance.h>'
plant "relative upward"       patch/C.cpp      '#include "../editor/FileDialog.h"'
plant "spaced directive"      patch/D.h        '#  include   "product/Tidewake.h"'
plant "other extension"       engine/E.hpp     '#include "core/Instance.h"'
plant "inline file"           engine/F.inc     '#include "vst2/Vst2.h"'
plant "X11 outside platform"  editor/G.cpp     '#include <X11/Xlib.h>'
plant "curl outside platform" editor/H.cpp     '#include <curl/curl.h>'
plant "unknown folder"        newlayer/I.cpp   '#include "platform/Thing.h"'
plant "relative within layer" core/J.cpp       '#include "../core/Instance.h"' pass
plant "platform may use X11"  platform/K.cpp   '#include <X11/Xlib.h>' pass

echo "$((12 - failures)) passed, $failures failed"
[ "$failures" -eq 0 ]
