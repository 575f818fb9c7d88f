// syncdb_listing.h: the storage objects of a date range become a list.
#ifndef UTILITY_SYNCDB_LISTING_H
#define UTILITY_SYNCDB_LISTING_H

#include <cstddef>
#include <cstdint>

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "utility/bplus.h"
#include "utility/zylobj.h"

namespace utility {

// What a listing with a tree counts, so that the question before a deletion states nothing that was
// not computed.
struct RangeCounts {
  std::size_t longestHandle = 0;  // set by the caller: characters of the longest; 0: not known

  std::uint64_t objects = 0;  // of the range
  std::uint64_t known = 0;    // of these: the tree holds the name
  // Names with bytes beyond ASCII, which a wrong character set changes.
  std::uint64_t foreignKnown = 0, foreignOffered = 0;
  // Not known, but longer than any handle, and beginning with one of the longest: as if the handles
  // had been cut off.
  std::uint64_t cutOff = 0;

  bool complete = false;  // the server has listed all objects, and each could be read
};

}  // namespace utility

// Appends the active objects of the range to `list`, except those whose name is in `tree` (may be
// null). The start date comes first here. `counts`, if not null, is filled. Returns 0 (even if
// there is nothing: message 2599), 102 without memory, or the library's code.
[[nodiscard]] unsigned short utGetFileList(const nfDate& start, const nfDate& end, orcObj_t* orc,
                                           CLinkedList<utZylObj_s>* list, dsBPlusTree* tree,
                                           utility::RangeCounts* counts = nullptr);

#endif  // UTILITY_SYNCDB_LISTING_H
