// records.h: lists of backup objects for the benchmarks.
#ifndef BENCH_RECORDS_H
#define BENCH_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "utility/zylobj.h"

namespace bench {

// Fills what differs between the objects of a site; the rest is left zero.
inline void fillRecord(utZylObj_s* object, std::size_t number) {
  std::memcpy(object->name, "/marlorc/oracle/SALES_df_729008281_1204_1",
              sizeof "/marlorc/oracle/SALES_df_729008281_1204_1");
  std::memcpy(object->node, "ORANODE", sizeof "ORANODE");
  object->objId = {static_cast<std::uint32_t>(number >> 32), static_cast<std::uint32_t>(number)};
  object->insDate = {2026, 3, 7, 8, 5, 9};
  object->sizeEstimate = {0, static_cast<std::uint32_t>(number) * 1024};
}

// Appends `count` objects.
inline void fillList(ObjectList* list, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    utZylObj_s object = {};
    fillRecord(&object, i);
    if (list->addTail(object, 0) != 0) std::abort();
  }
}

}  // namespace bench

#endif  // BENCH_RECORDS_H
