// psutil2.cpp: fixed locations, host and user, see psutil2.h.
#include "agent/psutil2.h"

#include <pwd.h>
#include <unistd.h>

#include <cstring>

#include "api/clientdirs.h"
#include "common/ut/installdirs.h"

namespace {

constexpr std::size_t kMaxHostName = 64;

}  // namespace

unsigned short psvexoGetVltiDir(char* out, std::size_t size) {
  return api::putWhole(out, size, ut::kApiDir);
}

unsigned short psvexoGetVexoDir(char* out, std::size_t size) {
  return api::putWhole(out, size, ut::kAgentDir);
}

unsigned short psvexoGetDefaultOptfile(char* out, std::size_t size) {
  return api::putWhole(out, size, ut::kAgentDir, "/vexo.opt");
}

unsigned short psvexoGetVltiConfig(char* out, std::size_t size) {
  return psGetMARLAPIConfig(out, size);
}

unsigned short psvexoGetNodeName(char* out, std::size_t size) {
  char name[kMaxHostName + 1] = "";
  if (::gethostname(name, sizeof name) != 0) *name = '\0';
  name[kMaxHostName] = '\0';
  return api::putWhole(out, size, name);
}

unsigned short psvexoGetOwnerName(char* out, std::size_t size) {
  const struct passwd* user = ::getpwuid(::getuid());
  const char* name = user == nullptr ? "" : user->pw_name;
  return api::putWhole(out, size, std::strcmp(name, "root") == 0 ? "" : name);
}

int psvexoGetID() { return static_cast<int>(::getpid()); }
