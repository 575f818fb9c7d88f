// syncdb_spool.h: what sqlplus spooled for one catalog becomes handles in the search tree.
#ifndef UTILITY_SYNCDB_SPOOL_H
#define UTILITY_SYNCDB_SPOOL_H

#include <cstddef>
#include <cstdint>

#include "utility/bplus.h"

namespace utility {

// From so many rows on sqlplus prints a row count, unless a profile changes that.
inline constexpr std::uint64_t kCountedFrom = 6;

// What one catalog's answer held.
struct CatalogAnswer {
  std::uint64_t rows = 0;     // handles, repeated ones included
  std::uint64_t handles = 0;  // handles that the tree did not hold before
  std::uint64_t lines = 0;    // that hold them: a full line may be a handle of its own
  std::size_t longest = 0;    // characters of the longest row
  bool counted = false;       // sqlplus has counted the rows, and the count is right
  bool lettersLost = false;   // a handle holds a sign that stands for a lost letter

  bool hasOtherJoins = false;  // there are too many lines to try every way of joining them

  // Rows may have been lost: there could be enough of them for a count, and there is none.
  bool mayBeIncomplete() const { return !counted && (lines >= kCountedFrom || hasOtherJoins); }
};

}  // namespace utility

// Puts the handles of a spool file into the tree and removes the file. Returns 0, 2576 when the
// file cannot be read, 2533 after a message when the answer is not sound (an error of Oracle in it,
// a row count that differs, a missing end, a file that the query did not write), or the tree's
// code (after a message when memory ran out). After anything but 0 the tree is of no use. `answer`,
// if not null, receives what was read.
[[nodiscard]] unsigned short utLoadBTree(const char* spoolPath, dsBPlusTree** tree,
                                         utility::CatalogAnswer* answer = nullptr);

#endif  // UTILITY_SYNCDB_SPOOL_H
