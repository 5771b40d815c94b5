#!/usr/bin/env bash
# Keeps the layer order true: a file may include headers of its own layer and of the layers
# below it, never of one above, and only platform/ (with the tools and the tests) may
# include X11 or POSIX headers. Prints every offending line and fails when there is one.
set -uo pipefail
cd "$(dirname "$0")/.."

# The folders each layer may include from, its own first.
declare -A allowed=(
  [platform]="platform"
  [speclang]="speclang platform"
  [engine]="engine speclang platform"
  [graphics]="graphics speclang platform"
  [vector]="vector graphics speclang platform"
  [cushy]="cushy vector graphics speclang platform"
  [model]="model cushy vector graphics engine speclang platform"
  [host]="host model cushy vector graphics engine speclang platform"
)
layers="platform speclang engine graphics vector cushy model host tools tests bench fuzz resources"
posix='X11/|sys/|unistd\.h|fcntl\.h|dlfcn\.h|pthread\.h|spawn\.h|poll\.h|dirent\.h|pwd\.h|signal\.h|semaphore\.h|sched\.h|termios\.h|strings\.h|wordexp\.h|glob\.h|libgen\.h'

faults=0
for layer in "${!allowed[@]}"; do
  [ -d "$layer" ] || continue
  while IFS= read -r line; do
    file=${line%%:*}
    target=$(sed -E 's/.*#include[[:space:]]*"([^/"]+)\/.*/\1/' <<<"${line#*:*:}")
    case " $layers " in *" $target "*) ;; *) continue ;; esac
    case " ${allowed[$layer]} " in
      *" $target "*) ;;
      *) echo "layer order: $line"; faults=$((faults + 1)) ;;
    esac
  done < <(grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"[^/"]+/' "$layer" --include='*.h' --include='*.cpp')
done

for dir in speclang engine graphics vector cushy model host resources; do
  [ -d "$dir" ] || continue
  while IFS= read -r line; do
    echo "system header outside platform/: $line"
    faults=$((faults + 1))
  done < <(grep -rnE "^[[:space:]]*#[[:space:]]*include[[:space:]]*<($posix)" "$dir" --include='*.h' --include='*.cpp')
done

if [ "$faults" -ne 0 ]; then
  echo "$faults include(s) break the layer order"
  exit 1
fi
echo "layer order: every include keeps to its layer"
