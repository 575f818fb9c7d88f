// generate.h: a realistic site from a seed: backup objects on the store and the catalogs' pieces.
//
// The objects spread over three years and end in the night before `today`; their low-level names
// have the forms that RMAN's formats make. Exactly `orphans` of them are known to no catalog, all
// others to the catalog of their database, and some of those to a second catalog as well. A piece
// is completed on the day of its object's insertion, so that no orphan is made by choosing a range
// of days.
//
// The same request on the same data gives the same rows, on every host.
#ifndef SANDBOX_ZYLSTORE_GENERATE_H
#define SANDBOX_ZYLSTORE_GENERATE_H

#include <cstdint>
#include <string>
#include <vector>

#include "sandbox/store/oracle_catalog.h"
#include "sandbox/store/store.h"

namespace sandbox {

struct SiteRequest {
  std::int64_t objects = 0;
  std::int64_t orphans = 0;  // at most `objects`
  std::uint64_t seed = 0;
  std::string fileSpace, owner;
  Stamp today = 0;
};

struct SiteSummary {
  Stamp first = 0, last = 0;       // insertion dates; 0 without objects
  std::int64_t pieces = 0;         // rows inserted into the catalogs
  std::int64_t inTwoCatalogs = 0;  // objects that are known to two of them
};

// `catalogs` holds at least one. The catalogs are committed before the store: a run that is killed
// leaves handles without objects, never objects that are orphans by mistake.
SiteSummary generateSite(Store& store, const Node& node, std::vector<OracleCatalog>& catalogs,
                         const SiteRequest& request);

}  // namespace sandbox

#endif  // SANDBOX_ZYLSTORE_GENERATE_H
