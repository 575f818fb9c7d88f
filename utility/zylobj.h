// zylobj.h: the records that the commands keep in lists, and what picked objects add up to.
#ifndef UTILITY_ZYLOBJ_H
#define UTILITY_ZYLOBJ_H

#include <cstdint>

#include "api/vltlib.h"
#include "common/ut/linklist.h"
#include "common/ut/nfdate.h"

// One backup object as the storage server lists it. Zero-filled before it is filled.
struct utZylObj_s {
  char name[1282];           // filespace, high-level and low-level name, joined without separators
  char node[64];             // of the session
  char owner[65];            // of the session; may be empty
  VltWord64 objId;           // identifies this one copy for deletion
  VltDate insDate;           // when it was stored
  VltWord64 sizeEstimate;    // bytes
  std::uint32_t selected;    // 1: picked for deletion
  std::uint32_t compressed;  // 1: the server says so
  std::uint8_t encryptionType;  // VLT_ENCRYPT_... bits
  std::uint32_t clientDeduplicated;
};

static_assert(sizeof utZylObj_s::name > VLT_MAX_FILESPACE + VLT_MAX_HIGHLEVEL + VLT_MAX_LOWLEVEL,
              "the longest name of the library fits whole");

// One Oracle catalog, as the user named it.
struct objCatInfo_s {
  char userName[1025];
  char password[1025];          // never traced
  char connString[1026];        // may be empty
  std::int32_t bNoCatalog;      // 1: the control file of the target database
  std::uint32_t catalogNumber;  // from 1, for messages
};

using ObjectList = CLinkedList<utZylObj_s>;
using CatalogList = CLinkedList<objCatInfo_s>;

namespace utility {

// "AES_128BIT", "AES_256BIT" or "DES_56BIT"; `none` for an object that is not encrypted.
const char* encryptionName(const utZylObj_s& object, const char* none);

// How many objects, and their size together. The size stops at 2^64 - 1.
struct ObjectTotal {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;

  void add(const utZylObj_s& object);
  void remove(const utZylObj_s& object);
};

// What is picked: counted anew from the marks. A question about a deletion shows this, never a
// total that was kept up to date on the way.
struct PickSummary {
  ObjectTotal total;
  nfDate oldest = {}, newest = {};  // of total.count objects; meaningless for none
};
PickSummary summarizePicks(const ObjectList& list);

}  // namespace utility

#endif  // UTILITY_ZYLOBJ_H
