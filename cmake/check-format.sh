#!/usr/bin/env bash
# Checks that the C and C++ sources are laid out as .clang-format says. Prints
# each file that is not, with the number of its lines the formatter would
# change, and a total; exits 1 if any would change. With --fix it formats
# them in place instead. CLANG_FORMAT names the formatter (clang-format-14).
set -euo pipefail
cd "$(dirname "$0")/.."
format=${CLANG_FORMAT:-clang-format-14}
fix=0
[ "${1:-}" = "--fix" ] && fix=1
mapfile -t files < <(git ls-files -- '*.c' '*.h' '*.cpp' '*.hpp')
changed_files=0
changed_lines=0
for file in "${files[@]}"; do
  if [ $fix -eq 1 ]; then
    "$format" --style=file -i "$file"
    continue
  fi
  lines=$("$format" --style=file "$file" | diff -U0 "$file" - | tail -n +3 | grep -c '^-' || true)
  if [ "$lines" -gt 0 ]; then
    echo "$file: $lines lines"
    changed_files=$((changed_files + 1))
    changed_lines=$((changed_lines + lines))
  fi
done
[ $fix -eq 1 ] && exit 0
echo "${changed_files} of ${#files[@]} files, ${changed_lines} lines would change"
[ $changed_files -eq 0 ]
