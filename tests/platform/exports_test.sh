#!/bin/sh
# Every function the platform headers declare is exported by the platform
# library with C linkage, and so are the keyed table's members.
#   exports_test.sh LIBRARY HEADER_DIR
set -u
symbols="$(nm -D --defined-only "$1")" && demangled="$(nm -DC --defined-only "$1")" || exit 1
functions="$(grep -hoE '\b(_?QX[A-Za-z]+|sk[A-Z][A-Za-z]+|[a-z]+_new) ?\(' "$2"/*.h | tr -d ' (' |
             sort -u)"
[ "$(printf '%s\n' "$functions" | wc -l)" -ge 60 ] || { echo "too few functions declared"; exit 1; }
missing=0
for f in $functions; do
  printf '%s\n' "$symbols" | grep -q " T $f\$" || { echo "not exported: $f"; missing=1; }
done
for m in '_Hash::_Hash(int, int, int, float)' '_Hash::insert(unsigned long, unsigned long)' \
         '_Hash::find(unsigned long)' '_Hash::remove(unsigned long)' '_Hash::isIn(unsigned long)' \
         '_Hash::hash(unsigned long)' '_Hash::keyCmp(unsigned long, unsigned long)' \
         '_Hash::dataCmp(unsigned long, unsigned long)' '_HashIter::_HashIter(_Hash&)' \
         '_HashIter::incr()' 'vtable for _Hash'; do
  printf '%s\n' "$demangled" | grep -qF " $m" || { echo "not exported: $m"; missing=1; }
done
exit $missing
