// clientdirs.cpp: the storage client's files, see clientdirs.h.
#include "api/clientdirs.h"

#include <cstdlib>
#include <cstring>

#include "common/ut/installdirs.h"
#include "common/ut/path.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

const char* environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : nullptr;
}

unsigned short directory(const char* variable, const char* installed, char* out, std::size_t size) {
  const char* value = environment(variable);
  if (value == nullptr) return api::putWhole(out, size, installed);
  return api::putWhole(out, size, value, ut::slashAfter(value));
}

}  // namespace

unsigned short api::putWhole(char* out, std::size_t size, const char* text, const char* suffix) {
  if (ut::copyText(out, size, text)) {
    const std::size_t length = std::strlen(text);
    if (ut::copyText(out + length, size - length, suffix)) return 0;
  }
  ut::ignoreResult(ut::copyText(out, size, ""), "half a path would name another file");
  return kPathTooLong;
}

unsigned short psGetMARLAPIDir(char* out, std::size_t size) {
  return directory("VLTI_DIR", ut::kApiDir, out, size);
}

unsigned short psGetMARLAPILog(char* out, std::size_t size) {
  return directory("VLTI_LOG", ut::kAgentDir, out, size);
}

unsigned short psGetMARLAPIConfig(char* out, std::size_t size) {
  const char* value = environment("VLTI_CONFIG");
  return value != nullptr ? api::putWhole(out, size, value)
                          : api::putWhole(out, size, ut::kAgentDir, "/vlt.opt");
}
