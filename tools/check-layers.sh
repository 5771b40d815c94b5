#!/usr/bin/env bash
# Keeps the layer order true: a file may include headers of its own layer and of the layers
# below it, never of one above, and only platform/ (with the tools, tests, benchmarks and
# fuzz targets) may include X11, curl or POSIX headers. Every include form counts: quoted
# or angled, "../folder/..." paths, "#  include", any source extension. A top-level folder
# with sources that is not in the table below fails too, so that a new folder is placed in
# the order before it is used. Prints every offending line and fails when there is one.
#
# Usage: check-layers.sh [ROOT]   (default: the repository)
set -uo pipefail
root=${1:-"$(dirname "$0")/.."}
cd "$root" || exit 2

# The folders each layer may include from, its own first; bottom to top.
declare -A allowed=(
  [platform]="platform"
  [speclang]="speclang platform"
  [engine]="engine speclang platform"
  [graphics]="graphics speclang platform"
  [vector]="vector graphics speclang platform"
  [patch]="patch speclang platform"
  [cushy]="cushy vector graphics speclang platform"
  [editor]="editor cushy patch vector graphics engine speclang platform"
  [core]="core editor cushy patch vector graphics engine speclang platform"
  [vst2]="vst2 core editor cushy patch vector graphics engine speclang platform"
  [clap]="clap core editor cushy patch vector graphics engine speclang platform"
  [lv2]="lv2 core editor cushy patch vector graphics engine speclang platform"
  [product]="product vst2 clap lv2 core editor cushy patch vector graphics engine speclang platform"
)
# Above every layer: they may include anything, and system headers.
top="tools tests bench fuzz"
# Folders without code of their own layer.
other="resources docs cmake build"
# System headers only platform/ may include.
posix='X11/|curl/|sys/|unistd\.h|fcntl\.h|dlfcn\.h|pthread\.h|spawn\.h|poll\.h|dirent\.h|pwd\.h|signal\.h|semaphore\.h|sched\.h|termios\.h|strings\.h|wordexp\.h|glob\.h|libgen\.h'
sources='.*\.(h|hh|hpp|hxx|c|cc|cpp|cxx|inc|ipp|tpp)$'

faults=0
fault() { echo "$1"; faults=$((faults + 1)); }

# Every top-level folder with sources must have a place.
for dir in */; do
  dir=${dir%/}
  case " ${!allowed[*]} $top $other " in *" $dir "*) continue ;; esac
  case "$dir" in build*) continue ;; esac
  if find "$dir" -type f -regextype posix-extended -regex "$sources" | grep -q .; then
    fault "unknown folder: $dir/ has sources but no place in the layer order"
  fi
done

for layer in "${!allowed[@]}"; do
  [ -d "$layer" ] || continue
  while IFS= read -r file; do
    lineno=0
    while IFS= read -r line; do
      lineno=$((lineno + 1))
      [[ $line =~ ^[[:space:]]*#[[:space:]]*include[[:space:]]*([\"\<])([^\"\>]+)[\"\>] ]] || continue
      quote=${BASH_REMATCH[1]} target=${BASH_REMATCH[2]}
      where="$file:$lineno:$line"
      if [ "$quote" = "<" ] && [ "$layer" != platform ] && [[ $target =~ ^($posix) ]]; then
        fault "system header outside platform/: $where"
        continue
      fi
      # Resolve "../" against the including file's folder to find the folder reached.
      if [[ $target == ../* || $target == ./* ]]; then
        resolved=$(realpath -m --relative-to=. "$(dirname "$file")/$target")
      else
        resolved=$target
      fi
      [[ $resolved == */* ]] || continue
      folder=${resolved%%/*}
      case " ${!allowed[*]} $top " in *" $folder "*) ;; *) continue ;; esac
      case " ${allowed[$layer]} " in
        *" $folder "*) ;;
        *) fault "layer order: $where" ;;
      esac
    done <"$file"
  done < <(find "$layer" -type f -regextype posix-extended -regex "$sources")
done

if [ "$faults" -ne 0 ]; then
  echo "$faults fault(s) break the layer order"
  exit 1
fi
echo "layer order: every include keeps to its layer"
