// site.cpp: where a sandbox's files lie.
#include "sandbox/store/site.h"

#include <cstdlib>
#include <filesystem>

#include "sandbox/store/text.h"

namespace sandbox {

std::string siteDirectory() {
  const char* home = std::getenv("SANDBOX_HOME");
  return home != nullptr ? home : "";
}

std::string defaultStorePath() {
  const std::string home = siteDirectory();
  return home.empty() ? "" : home + "/store.db";
}

std::string defaultPasswordDirectory(const std::string& storePath) {
  const std::string home = siteDirectory();
  if (!home.empty()) return home + "/passwords";
  return std::filesystem::path(storePath).parent_path().string();
}

std::string catalogDirectory() { return siteDirectory() + "/catalogs"; }

bool isCatalogName(std::string_view name) {
  return !name.empty() && name.front() != '.' && name.find('/') == std::string_view::npos;
}

std::optional<std::string> findCatalog(std::string_view name) {
  if (!isCatalogName(name) || siteDirectory().empty()) return std::nullopt;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(catalogDirectory(), error)) {
    if (entry.path().extension() == ".db" && equalIgnoringCase(entry.path().stem().string(), name))
      return entry.path().string();
  }
  return std::nullopt;
}

std::string newCatalogPath(std::string_view name) {
  return catalogDirectory() + "/" + std::string(name) + ".db";
}

}  // namespace sandbox
