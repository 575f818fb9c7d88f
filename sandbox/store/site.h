// site.h: where a sandbox's files lie.
//
//   $SANDBOX_HOME/store.db          the storage server's data
//   $SANDBOX_HOME/passwords/        generated passwords
//   $SANDBOX_HOME/catalogs/NAME.db  one Oracle catalog, reached as connect identifier NAME
#ifndef SANDBOX_STORE_SITE_H
#define SANDBOX_STORE_SITE_H

#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

// $SANDBOX_HOME; empty if the variable is not set.
std::string siteDirectory();

// $SANDBOX_HOME/store.db; empty without the variable.
std::string defaultStorePath();

// The directory of generated passwords of a store: $SANDBOX_HOME/passwords, and without
// the variable the store's own directory.
std::string defaultPasswordDirectory(const std::string& storePath);

std::string catalogDirectory();

// The catalog that an empty connect identifier reaches.
inline constexpr std::string_view kDefaultCatalog = "default";

// A name that can be a file's name: not empty, no "/", no "." in front.
bool isCatalogName(std::string_view name);

// The file of an existing catalog, letter case ignored as in a connect identifier; nothing if
// there is none.
std::optional<std::string> findCatalog(std::string_view name);

// Where a new catalog of this name is made.
std::string newCatalogPath(std::string_view name);

}  // namespace sandbox

#endif  // SANDBOX_STORE_SITE_H
