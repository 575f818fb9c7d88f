// catalogdialogue.h: asks for user, password and connect string of each Oracle catalog.
#ifndef UTILITY_CATALOGDIALOGUE_H
#define UTILITY_CATALOGDIALOGUE_H

#include <cstdint>
#include <string>

#include "agent/orcctx.h"
#include "utility/zylobj.h"

namespace utility {

struct CatalogRequest {
  std::uint32_t count;  // how many catalogs, or databases
  bool noCatalog;       // the control files of databases are asked
  bool fromScript;      // passwords too are read from standard input
};

// Asks for all of them and appends them to `catalogs`. Returns 0; 65535 after three answers that
// cannot be used (the session is then ended) or without a terminal for the password; 2522.
[[nodiscard]] unsigned short askForCatalogs(const CatalogRequest& request, orcObj_t* orc,
                                            CatalogList* catalogs);

// The name of a catalog in messages, as its prompts have it: "Catalog 1", or "Database 1".
std::string catalogName(const objCatInfo_s& catalog);

}  // namespace utility

#endif  // UTILITY_CATALOGDIALOGUE_H
