// site.h: where a sandbox's files are.
//
//   $SANDBOX_HOME/store.db          the storage server's data
//   $SANDBOX_HOME/passwords/        generated passwords
//   $SANDBOX_HOME/catalogs/NAME.db  the Oracle catalog of connect identifier NAME, in small letters
#ifndef SANDBOX_STORE_SITE_H
#define SANDBOX_STORE_SITE_H

#include <string>
#include <string_view>

namespace sandbox {

// Empty if SANDBOX_HOME is not set.
std::string defaultStorePath();

// The directory of generated passwords of a store; without SANDBOX_HOME the store's own directory.
std::string defaultPasswordDirectory(const std::string& storePath);

// The catalog that an empty connect identifier reaches.
inline constexpr std::string_view kDefaultCatalog = "default";

// The file of a catalog, whether it is there or not. Empty if SANDBOX_HOME is not set, or if the
// name cannot be a file's: it is empty, has a "/" or begins with ".".
std::string catalogPath(std::string_view name);

}  // namespace sandbox

#endif  // SANDBOX_STORE_SITE_H
