#!/usr/bin/env bash
# The device table: guest instructions and memory accesses per pixel of
# every span primitive and converter, ours (the kernel the device build
# picks, and its reference) beside pixman doing the same job, at 800x480 on
# icon-like and on random-alpha content. Each count runs device_count under
# qemu-arm -cpu arm926 (an ARMv5TE core without SIMD, as on the device, so
# pixman picks its plain C paths) with the armcount plugin, for two
# iteration counts; their difference excludes start-up and set-up. The 565
# converters get a second pixman column: its ordered dither.
#
#   bash bench/device/count.sh [OPERATION-REGEX]
#
# The plugin is built from ../shared/tools/armcount/insncount.c beside this
# checkout (or beside the main checkout of a git worktree), or from
# $ARMCOUNT_DIR/insncount.c.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$root"
filter=${1:-.}

# Beside the checkout, or beside the main checkout when this is a git worktree.
armcount=${ARMCOUNT_DIR:-$root/../shared/tools/armcount}
if [ -z "${ARMCOUNT_DIR:-}" ] && [ ! -f "$armcount/insncount.c" ]; then
  common=$(git rev-parse --path-format=absolute --git-common-dir 2>/dev/null || true)
  [ -z "$common" ] || armcount=$(dirname "$common")/../shared/tools/armcount
fi
if [ ! -f "$armcount/insncount.c" ]; then
  echo "count.sh: no instruction counter: $armcount/insncount.c is missing." >&2
  echo "  It is the qemu plugin kept beside the repository in ../shared/tools/armcount;" >&2
  echo "  set ARMCOUNT_DIR to the folder that holds insncount.c." >&2
  exit 1
fi
command -v qemu-arm >/dev/null || { echo "count.sh: qemu-arm (qemu-user) is needed" >&2; exit 1; }

plugin=$root/build/armcount/insncount.so
mkdir -p "$(dirname "$plugin")"
if [ ! -f "$plugin" ] || [ "$armcount/insncount.c" -nt "$plugin" ]; then
  cc -O2 -shared -fPIC -o "$plugin" "$armcount/insncount.c"
fi

cmake --preset armel >/dev/null
cmake --build --preset armel --target device_count >/dev/null
program=$root/build/armel/bench/device/device_count
sysroot=$root/build/armel/sysroot
libs=$sysroot/lib/arm-linux-gnueabi:$sysroot/usr/lib/arm-linux-gnueabi

pixels=$((800 * 480))
low=1 high=3

# "insns mem" of one run; PIXMAN_DISABLE passes through.
count_once() {
  LD_LIBRARY_PATH=$libs qemu-arm -cpu arm926 -L /usr/arm-linux-gnueabi -plugin "$plugin" \
    "$program" "$@" 2>&1 >/dev/null | awk '/^insns:/ {i = $2} /^mem:/ {m = $2} END {print i, m}' || true
}

# "insns/px mem/px" of one job: the difference of two iteration counts;
# "- -" where the job cannot run (pixman_fill has no general path).
per_pixel() {
  local a b
  a=$(count_once "$1" "$2" "$3" $low)
  b=$(count_once "$1" "$2" "$3" $high)
  echo "$a $b" | awk -v n=$(((high - low) * pixels)) \
    'NF == 4 {printf "%.2f %.2f\n", ($3 - $1) / n, ($4 - $2) / n; next} {print "- -"}'
}

# pixman's ARM SIMD and NEON paths need ARMv6 or later: under arm926 its
# counts must stay the same when they are switched off.
check_c_paths() {
  local op=blend_pixels_rgba_to_rgba plain disabled
  plain=$(per_pixel $op pixman:0 icon)
  disabled=$(PIXMAN_DISABLE="arm-simd arm-neon arm-iwmmxt" per_pixel $op pixman:0 icon)
  if [ "$plain" = "$disabled" ]; then
    echo "pixman ran its C paths: $op costs the same ($plain insns and accesses per pixel) with its ARM SIMD, NEON and iwMMXt paths disabled."
  else
    echo "WARNING: pixman's counts change with its ARM SIMD paths disabled ($plain against $disabled)."
  fi
}

echo "| operation | content | ours insns/px | ours mem/px | reference insns/px | reference mem/px | pixman's job | pixman insns/px | pixman mem/px | insns pixman/ours | mem pixman/ours | pixman dithered insns/px | pixman dithered mem/px |"
echo "|---|---|---:|---:|---:|---:|---|---:|---:|---:|---:|---:|---:|"
LD_LIBRARY_PATH=$libs qemu-arm -L /usr/arm-linux-gnueabi "$program" list | grep -E "^[^	]*($filter)" |
while IFS=$'\t' read -r op dithered jobs; do
  for content in icon random; do
    read -r oi om < <(per_pixel "$op" ours $content)
    # A blit has no reference of its own to run: its row passes are
    # compared with theirs by the tests.
    ri="-" rm="-"
    [[ $op == blit_* ]] || read -r ri rm < <(per_pixel "$op" reference $content)
    # pixman at its best: of its jobs, on the path it picks and on its
    # general path (fast paths off), the one with the fewest instructions.
    best="-" pi="-" pm="-"
    n=0
    IFS=$'\t' read -r -a names <<<"$jobs"
    for name in "${names[@]}"; do
      [ -n "$name" ] || continue
      for path in picked general; do
        disable=""
        [ $path = picked ] || disable=fast
        read -r ji jm < <(PIXMAN_DISABLE=$disable per_pixel "$op" pixman:$n $content)
        [ "$ji" != "-" ] || continue
        if [ "$pi" = "-" ] || awk -v a="$ji" -v b="$pi" 'BEGIN {exit !(a < b)}'; then
          best=$name pi=$ji pm=$jm
          [ $path = picked ] || best="$name (general path)"
        fi
      done
      n=$((n + 1))
    done
    ratio_i="-" ratio_m="-"
    if [ "$pi" != "-" ]; then
      ratio_i=$(awk -v a="$pi" -v b="$oi" 'BEGIN {printf "%.2f", a / b}')
      ratio_m=$(awk -v a="$pm" -v b="$om" 'BEGIN {printf "%.2f", a / b}')
    fi
    # The 565 converters also beside pixman's ordered dither, which only its
    # general path does.
    di="-" dm="-"
    [ "$dithered" = "-" ] || read -r di dm < <(per_pixel "$op" dithered $content)
    echo "| $op | $content | $oi | $om | $ri | $rm | $best | $pi | $pm | $ratio_i | $ratio_m | $di | $dm |"
  done
done
echo
check_c_paths
