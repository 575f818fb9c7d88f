// runreport.cpp: what a run listed, doubted and deleted, see runreport.h.
#include "utility/runreport.h"

#include <cstring>
#include <new>
#include <utility>

#include "agent/errormsg.h"
#include "agent/logfile.h"
#include "common/nls/nls.h"
#include "common/ut/version.h"
#include "utility/recordline.h"

namespace {

constexpr std::size_t kLargestBatch = std::size_t{64} << 10;  // bytes kept in memory

std::string dayText(const nfDate& date) {
  return std::string(ut::isoDate(date).text).substr(0, std::strlen("2026-11-21"));
}

// The line of an event whose time matters.
ut::JsonLine lineFor(const char* event) {
  ut::JsonLine line = utility::recordLine(event);
  utility::addOrigin(&line);
  line.text("run", utility::runName());
  return line;
}

}  // namespace

utility::RunReport::RunReport(const char* path, const char* command) : command_(command) {
  guarded([&] { path_ = path != nullptr ? path : ""; });
}

// Runs what may need memory. Without memory there is no report, and the run goes on.
template <typename Action>
void utility::RunReport::guarded(Action&& action) {
  try {
    action();
  } catch (const std::bad_alloc&) {
    giveUp();
  }
}

void utility::RunReport::giveUp() {
  const std::string path = std::exchange(path_, {});
  lines_.clear();
  try {
    agent::showAndLog(nlsprintf(msg::kReportIncomplete, path));
  } catch (const std::bad_alloc&) {
    // Nor is there memory to say so; the missing "finish" does.
  }
}

void utility::RunReport::flush() {
  if (!lines_.empty() && !agent::appendWhole(path_.c_str(), lines_)) giveUp();
  lines_.clear();
}

void utility::RunReport::add(std::string_view lines) {
  if (!isOpen()) return;
  guarded([&] {
    lines_ += lines;
    flush();
  });
}

void utility::RunReport::hold(std::string_view line) {
  if (isOpen()) guarded([&] { held_ += line; });
}

void utility::RunReport::endTransaction(bool committed, std::string_view line) {
  if (committed) add(held_);
  held_.clear();
  add(line);
}

void utility::RunReport::logon(const char* node, const char* owner) {
  if (!isOpen()) return;
  guarded([&] {
    node_ = node;
    owner_ = owner;
  });
}

void utility::RunReport::begin(const nfDate* from, const nfDate* to) {
  ut::JsonLine line = lineFor("start");
  line.text("version", ut::kVersion).text("command", command_);
  line.text("node", node_).text("owner", owner_);
  if (from != nullptr) line.text("from", dayText(*from)).text("to", dayText(*to));
  begun_ = true;
  add(line.finish());
}

void utility::RunReport::start(const nfDate& from, const nfDate& to) {
  if (isOpen()) guarded([&] { begin(&from, &to); });
}

void utility::RunReport::listing(const RangeCounts& counts, const ObjectList& list) {
  if (!isOpen()) return;
  counts_ = counts;
  guarded([&] {
    for (const utZylObj_s* object = list.getFirst(); object != nullptr && isOpen();
         object = list.getNext(object)) {
      listed_.add(*object);
      ut::JsonLine line = recordLine("object");
      line.text("run", runName());
      addObject(*object, &line);
      line.text("encryption", encryptionName(*object, "none")).text("name", object->name);
      lines_ += line.finish();
      if (lines_.size() > kLargestBatch) flush();
    }
    flush();
  });
}

void utility::RunReport::doubt(std::string_view message) {
  ++doubts_;
  if (!isOpen()) return;
  guarded([&] {
    const std::size_t blank = message.find(' ');  // after the identifier
    const std::string_view text =
        blank < message.size() ? message.substr(blank + 1) : std::string_view();
    add(lineFor("doubt").text("id", message.substr(0, blank)).text("text", text).finish());
  });
}

void utility::RunReport::deleted(const ObjectTotal& committed) { deleted_ = committed; }

void utility::RunReport::finish(int code, int status) {
  if (!isOpen()) return;
  guarded([&] {
    if (!begun_) begin(nullptr, nullptr);
    ut::JsonLine line = lineFor("finish");
    line.signedNumber("code", code).signedNumber("status", status);
    line.flag("complete", counts_.complete).number("objects", counts_.objects);
    if (std::strcmp(command_, "SYNCDB") == 0) line.number("known", counts_.known);
    line.number("listed", listed_.count).number("listedBytes", listed_.bytes);
    line.number("doubts", doubts_);
    line.number("deleted", deleted_.count).number("deletedBytes", deleted_.bytes);
    add(line.finish());
  });
}
