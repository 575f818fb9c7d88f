// deletionlog.cpp: the record of what was deleted, see deletionlog.h.
#include "utility/deletionlog.h"

#include <pwd.h>
#include <unistd.h>

#include <ctime>

#include "agent/logfile.h"
#include "agent/psutil2.h"
#include "api/vltapi.h"
#include "common/ut/jsonline.h"
#include "common/ut/nfdate.h"

namespace {

constexpr std::uint64_t kFormatVersion = 1;
constexpr std::size_t kLargestBatch = std::size_t{64} << 10;  // bytes kept in memory

std::string userName() {
  const struct passwd* user = ::getpwuid(::getuid());
  return user != nullptr ? user->pw_name : std::to_string(::getuid());
}

std::string logPath() {
  char path[api::kPathSize];
  agent::findLog(utility::kDeletionLogName, path);
  return path;
}

const char* textOf(utility::Outcome outcome) {
  if (outcome == utility::Outcome::kCommitted) return "committed";
  return outcome == utility::Outcome::kTakenBack ? "taken back" : "unknown";
}

// Distinguishes the runs that have the same process number.
std::time_t runTime() {
  static const std::time_t start = std::time(nullptr);
  return start;
}

ut::JsonLine lineFor(const char* event, const std::string& user, const std::string& transaction) {
  ut::JsonLine line;
  line.number("v", kFormatVersion).text("event", event).text("time", ut::isoNow().text);
  line.signedNumber("pid", psvexoGetID()).text("user", user).text("transaction", transaction);
  return line;
}

}  // namespace

utility::DeletionLog::DeletionLog() : path_(logPath()), user_(userName()) {}

bool utility::DeletionLog::canWrite() const { return agent::appendLocked(path(), ""); }

void utility::DeletionLog::begin(unsigned number) {
  transaction_ = std::to_string(runTime()) + "-" + std::to_string(psvexoGetID()) + "-" +
                 std::to_string(number);
  objects_ = 0;
}

void utility::DeletionLog::add(const utZylObj_s& object) {
  lines_ += lineFor("delete", user_, transaction_)
                .text("node", object.node)
                .text("owner", object.owner)
                .text("id", std::to_string(api::toNumber(object.objId)))
                .number("size", api::toNumber(object.sizeEstimate))
                .text("date", ut::isoDate(api::toNfDate(object.insDate)).text)
                .text("name", object.name)
                .finish();
  ++objects_;
  if (lines_.size() > kLargestBatch) flush();
}

void utility::DeletionLog::flush() {
  if (!lines_.empty() && !agent::appendLocked(path(), lines_)) failed_ = true;
  lines_.clear();
}

void utility::DeletionLog::end(Outcome outcome, std::int16_t code, std::uint16_t reason) {
  lines_ += lineFor("end", user_, transaction_)
                .text("outcome", textOf(outcome))
                .signedNumber("code", code)
                .number("reason", reason)
                .number("objects", objects_)
                .finish();
  flush();
}
