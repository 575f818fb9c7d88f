// site.cpp: where a sandbox's files are.
#include "sandbox/store/site.h"

#include <cstdlib>
#include <filesystem>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

// A file of the site; empty without a site.
std::string inSite(const std::string& name) {
  const char* home = std::getenv("SANDBOX_HOME");
  return home == nullptr || *home == '\0' ? "" : std::string(home) + "/" + name;
}

}  // namespace

std::string defaultStorePath() { return inSite("store.db"); }

std::string defaultPasswordDirectory(const std::string& storePath) {
  const std::string directory = inSite("passwords");
  return directory.empty() ? std::filesystem::path(storePath).parent_path().string() : directory;
}

std::string catalogPath(std::string_view name) {
  const bool canBeFile =
      !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos;
  return canBeFile ? inSite("catalogs/" + lowerCase(name) + ".db") : "";
}

}  // namespace sandbox
