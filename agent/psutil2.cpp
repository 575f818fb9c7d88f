// psutil2.cpp: fixed locations, host and user, see psutil2.h.
#include "agent/psutil2.h"

#include <pwd.h>
#include <unistd.h>

#include <cstring>

#include "api/clientdirs.h"
#include "common/ut/installdirs.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

constexpr std::size_t kMaxHostName = 64;

unsigned short put(char* out, std::size_t size, const char* text) {
  return ut::copyText(out, size, text) ? 0 : api::kPathTooLong;
}

}  // namespace

unsigned short psvexoGetVltiDir(char* out, std::size_t size) { return put(out, size, ut::kApiDir); }

unsigned short psvexoGetVexoDir(char* out, std::size_t size) {
  return put(out, size, ut::kAgentDir);
}

unsigned short psvexoGetDefaultOptfile(char* out, std::size_t size) {
  char path[sizeof ut::kAgentDir + sizeof "/vexo.opt"] = "";
  ut::ignoreResult(ut::appendText(path, ut::kAgentDir), "made to fit");
  ut::ignoreResult(ut::appendText(path, "/vexo.opt"), "made to fit");
  return put(out, size, path);
}

unsigned short psvexoGetVltiConfig(char* out, std::size_t size) {
  return psGetMARLAPIConfig(out, size);
}

unsigned short psvexoGetNodeName(char* out, std::size_t size) {
  char name[kMaxHostName + 1] = "";
  if (::gethostname(name, sizeof name) != 0) *name = '\0';
  name[kMaxHostName] = '\0';
  return put(out, size, name);
}

unsigned short psvexoGetOwnerName(char* out, std::size_t size) {
  const struct passwd* user = ::getpwuid(::getuid());
  const char* name = user == nullptr ? "" : user->pw_name;
  return put(out, size, std::strcmp(name, "root") == 0 ? "" : name);
}

int psvexoGetID() { return static_cast<int>(::getpid()); }
