// findings.h: what a run has learned from Oracle before its pick list is shown.
#ifndef UTILITY_FINDINGS_H
#define UTILITY_FINDINGS_H

#include <cstdint>

namespace utility {

// Filled by SYNCDB while it reconciles, and read by the question before a deletion.
struct Findings {
  std::uint32_t catalogsAsked = 0;
  std::uint32_t catalogsWithoutHandles = 0;  // of those, how many reported no backup piece
  std::uint64_t handlesKnown = 0;            // distinct handles, over all catalogs
};

}  // namespace utility

#endif  // UTILITY_FINDINGS_H
