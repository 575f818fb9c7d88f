// recordline.cpp: lines of the record of deletions and of the report, see recordline.h.
#include "utility/recordline.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdint>
#include <ctime>

#include "agent/psutil2.h"
#include "api/vltapi.h"
#include "common/ut/nfdate.h"

namespace {

constexpr std::uint64_t kFormatVersion = 1;

std::string findUserName() {
  const struct passwd* user = ::getpwuid(::getuid());
  return user != nullptr ? user->pw_name : std::to_string(::getuid());
}

}  // namespace

const std::string& utility::runName() {
  static const std::string name =
      std::to_string(std::time(nullptr)) + "-" + std::to_string(psvexoGetID());
  return name;
}

ut::JsonLine utility::recordLine(const char* event) {
  ut::JsonLine line;
  line.number("v", kFormatVersion).text("event", event);
  return line;
}

void utility::addOrigin(ut::JsonLine* line) {
  static const std::string user = findUserName();
  line->text("time", ut::isoNow().text).signedNumber("pid", psvexoGetID()).text("user", user);
}

void utility::addObject(const utZylObj_s& object, ut::JsonLine* line) {
  line->text("id", std::to_string(api::toNumber(object.objId)))
      .number("size", api::toNumber(object.sizeEstimate))
      .text("date", ut::isoDate(api::toNfDate(object.insDate)).text);
}
