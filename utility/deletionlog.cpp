// deletionlog.cpp: the record of what was deleted, see deletionlog.h.
#include "utility/deletionlog.h"

#include "agent/logfile.h"
#include "api/clientdirs.h"
#include "utility/recordline.h"

namespace {

constexpr std::size_t kLargestBatch = std::size_t{64} << 10;  // bytes kept in memory

std::string logPath() {
  char path[api::kPathSize];
  agent::findLog(utility::kDeletionLogName, path);
  return path;
}

const char* textOf(utility::Outcome outcome) {
  if (outcome == utility::Outcome::kCommitted) return "committed";
  return outcome == utility::Outcome::kTakenBack ? "taken back" : "unknown";
}

ut::JsonLine lineFor(const char* event, const std::string& transaction) {
  ut::JsonLine line = utility::recordLine(event);
  utility::addOrigin(&line);
  line.text("transaction", transaction);
  return line;
}

}  // namespace

utility::DeletionLog::DeletionLog(RunReport* report)
    : report_(report != nullptr && report->isOpen() ? report : nullptr), path_(logPath()) {}

bool utility::DeletionLog::canWrite() const { return agent::appendLocked(path(), ""); }

void utility::DeletionLog::begin(unsigned number) {
  transaction_ = runName() + "-" + std::to_string(number);
  objects_ = 0;
}

void utility::DeletionLog::add(const utZylObj_s& object) {
  ut::JsonLine line = lineFor("delete", transaction_);
  line.text("node", object.node).text("owner", object.owner);
  addObject(object, &line);
  const std::string text = line.text("name", object.name).finish();
  lines_ += text;
  if (report_ != nullptr) report_->hold(text);
  ++objects_;
  if (lines_.size() > kLargestBatch) flush();
}

void utility::DeletionLog::flush() {
  if (!lines_.empty() && !agent::appendLocked(path(), lines_)) failed_ = true;
  lines_.clear();
}

void utility::DeletionLog::end(Outcome outcome, std::int16_t code, std::uint16_t reason) {
  const std::string text = lineFor("end", transaction_)
                               .text("outcome", textOf(outcome))
                               .signedNumber("code", code)
                               .number("reason", reason)
                               .number("objects", objects_)
                               .finish();
  lines_ += text;
  flush();
  if (report_ != nullptr) report_->endTransaction(outcome == Outcome::kCommitted, text);
}
