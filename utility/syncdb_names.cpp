// syncdb_names.cpp: what the search tree calls for file names, see syncdb_names.h.
#include "utility/syncdb_names.h"

#include <cstring>

#include "common/ut/agttrc.h"

unsigned short utInsertFilename(void* from, void* to) {
  TRACE(TR_ALL, " %s: Enter\n", "utInsertFilename()");
  const char* name = static_cast<const char*>(from);
  std::memcpy(to, name, std::strlen(name) + 1);
  TRACE(TR_ALL, " %s: Exit\n\n", "utInsertFilename()");
  return 0;
}

namespace {

// Out of the way of the comparison: a look-up compares some thirty times.
[[gnu::cold, gnu::noinline]] compare_t traceComparison(compare_t result) {
  TRACE(TR_ALL, " %s: Enter\n", "utFindFilename()");
  if (result == bEqualTo) TRACE(TR_ALL, " %s: Exit - bEqualTo\n\n", "utFindFilename()");
  if (result == bGreaterThan) TRACE(TR_ALL, " %s: Exit - bGreaterThan\n\n", "utFindFilename()");
  if (result == bLessThan) TRACE(TR_ALL, " %s: Exit - bLessThan\n\n", "utFindFilename()");
  return result;
}

}  // namespace

compare_t utFindFilename(void* searched, void* stored) {
  const int order =
      std::strcmp(static_cast<const char*>(searched), static_cast<const char*>(stored));
  const compare_t result = order == 0 ? bEqualTo : order > 0 ? bGreaterThan : bLessThan;
  return TR_ALL != 0 ? traceComparison(result) : result;
}

void utFreeTree(void* item) {
  TRACE(TR_ALL, " %s: Enter\n", "utFreeTree()");
  BTreeFree(__FILE__, __LINE__, &item);
  TRACE(TR_ALL, " %s: Exit\n\n", "utFreeTree()");
}
