#!/bin/sh
# Every platform function the library calls is exported by the platform
# library, with C linkage, and so are the keyed table's members.
#   exports_test.sh LIBRARY
set -u
lib="$1"
symbols="$(nm -D --defined-only "$lib")" || exit 1
demangled="$(nm -DC --defined-only "$lib")" || exit 1
missing=0
for f in QXwInit QXwGetMapInfo QXwFreeMapInfo QXwProcessEvent QXwDone QXwAckMapClose \
         QXwAddCallback QXwAddInput QXwRemoveInput QXwError QXwErrorMsg \
         QXwListSymbols QXwGetSymbolsByObject QXwFreeSymbolList QXwGetSubmapInfo QXwFreeSubmapInfo \
         QXwGetObjectInfo QXwFreeObjectInfo QXwDeleteSymbols QXwSetSymbolsVisibility \
         QXwSetObjectAckState _QXwManageObjects _QXwUnmanageObjects \
         QXwDbFieldNameToFieldId QXwDbSelectionNameToObjectId QXwDbObjectIdToSelectionName \
         QXwDbHostnameToObjectId QXwDbGetFieldValues QXwDbGetCapabilityFieldValues \
         QXwDbFreeFieldBindList QXwDbGetFieldValuesByObjects QXwDbFreeObjectFieldList \
         QXwDbGetFieldIntegerValue QXwDbSetFieldIntegerValue QXwDbListObjectsByFieldValue \
         QXwDbListObjectsByFieldValues QXwDbFreeObjectIdList QXwDbListFields QXwDbFreeFieldList \
         QXwDbGetFieldInfo QXwDbFreeFieldInfo QXwDbGetEnumConstants QXwDbFreeEnumConstants \
         skCollectionOpen skCollectionEvaluate skCollectionDone \
         _QXhash _QXstrdup _QXstrtok strlen_new strcmp_new strncmp_new strcpy_new strncpy_new \
         strdup_new strchr_new gethostbyname_new _QXtraceActive _QXtraceEnter _QXtraceExit; do
  if ! printf '%s\n' "$symbols" | grep -q " T $f\$"; then
    echo "not exported: $f"
    missing=1
  fi
done
for m in '_Hash::_Hash(int, int, int, float)' '_Hash::insert(unsigned long, unsigned long)' \
         '_Hash::find(unsigned long)' '_Hash::remove(unsigned long)' '_Hash::isIn(unsigned long)' \
         '_Hash::hash(unsigned long)' '_Hash::keyCmp(unsigned long, unsigned long)' \
         '_Hash::dataCmp(unsigned long, unsigned long)' '_HashIter::_HashIter(_Hash&)' \
         '_HashIter::incr()' 'vtable for _Hash'; do
  if ! printf '%s\n' "$demangled" | grep -qF " $m"; then
    echo "not exported: $m"
    missing=1
  fi
done
exit $missing
