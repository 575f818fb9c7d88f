// control.cpp: faults to order and the record of calls.
#include "sandbox/store/control.h"

#include <unistd.h>

#include <filesystem>
#include <thread>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr const char* kCallSchema = R"(
PRAGMA journal_mode=WAL;
CREATE TABLE IF NOT EXISTS call(
  seq INTEGER PRIMARY KEY AUTOINCREMENT, process INTEGER NOT NULL, operation TEXT NOT NULL,
  arguments TEXT NOT NULL, code INTEGER NOT NULL);
)";

// Without "vlt". Operations that return nothing cannot fail and are not here.
constexpr std::string_view kFallibleOperations[] = {
#define VLT_CODE(operation, ...) #operation,
#define VLT_VOID(...)
#include "api/vltentries.def"
};

void showLines(Database& database, std::string_view select, const Control::ShowLine& show) {
  Statement lines = database.prepare(select);
  while (lines.step()) show(lines.text(0));
}

}  // namespace

std::optional<std::string> findOperation(std::string_view name) {
  if (equalIgnoringCase(name.substr(0, 3), "vlt")) name.remove_prefix(3);
  for (std::string_view operation : kFallibleOperations) {
    if (equalIgnoringCase(name, operation)) return "vlt" + std::string(operation);
  }
  return std::nullopt;
}

void Control::refresh() {
  recording_ = store_.setting("recordCalls") != 0;
  latency_ = std::chrono::milliseconds(store_.setting("latency"));
  armed_ = store_.database().queryInteger("SELECT EXISTS(SELECT 1 FROM fault)") != 0;
}

std::optional<Fault> Control::strike(std::string_view operation) {
  if (latency_.count() > 0) std::this_thread::sleep_for(latency_);
  if (!armed_) return std::nullopt;
  WriteTransaction counting(store_.database());
  Fault fault;
  {
    // Its own scope, because the commit fails while a read is open.
    Statement oldest = store_.database().prepare(
        "SELECT id,operation,code,reason,remaining,times FROM fault WHERE operation=? "
        "ORDER BY id LIMIT 1");
    if (!oldest.bindAll(operation).step()) return std::nullopt;
    fault = {oldest.integer(0),
             std::string(oldest.text(1)),
             static_cast<std::int16_t>(oldest.integer(2)),
             static_cast<std::uint16_t>(oldest.integer(3)),
             oldest.integer(4),
             oldest.integer(5)};
  }
  countDown(fault);
  counting.commit();
  if (fault.remaining > 0) return std::nullopt;
  return fault;
}

void Control::countDown(const Fault& fault) {
  const char* sql = "DELETE FROM fault WHERE id=?";
  if (fault.remaining > 0) {
    sql = "UPDATE fault SET remaining=remaining-1 WHERE id=?";
  } else if (fault.times > 1) {
    sql = "UPDATE fault SET times=times-1 WHERE id=?";
  }
  store_.database().prepare(sql).bindAll(fault.id).run();
}

void Control::record(std::string_view operation, std::string_view arguments, std::int16_t code) {
  if (!insertCall_) {
    calls_.emplace(callsPath(store_.path()), Database::Mode::kExisting);
    insertCall_ =
        calls_->prepare("INSERT INTO call(process,operation,arguments,code) VALUES(?,?,?,?)");
  }
  insertCall_->bindAll(getpid(), operation, arguments, code).run();
}

void Control::arm(const Fault& fault) {
  store_.database()
      .prepare("INSERT INTO fault(operation,code,reason,remaining,times) VALUES(?,?,?,?,?)")
      .bindAll(fault.operation, fault.code, fault.reason, fault.remaining, fault.times)
      .run();
}

void Control::clearFaults() { store_.database().execute("DELETE FROM fault"); }

void Control::listFaults(const ShowLine& show) {
  showLines(store_.database(),
            "SELECT operation||char(9)||'code '||code||char(9)||'reason '||reason||char(9)||"
            "'after '||remaining||char(9)||'times '||times FROM fault ORDER BY id",
            show);
}

void Control::switchRecording(bool on) {
  // Made before recording is on, so that programs always find it complete.
  if (on) Database(callsPath(store_.path()), Database::Mode::kCreate).execute(kCallSchema);
  store_.changeSetting("recordCalls", on ? 1 : 0);
}

std::optional<Database> Control::openCalls() const {
  const std::string path = callsPath(store_.path());
  if (!std::filesystem::exists(path)) return std::nullopt;
  return Database(path, Database::Mode::kExisting);
}

void Control::clearCalls() {
  if (std::optional<Database> calls = openCalls()) calls->execute("DELETE FROM call");
}

void Control::listCalls(const ShowLine& show) {
  std::optional<Database> calls = openCalls();
  if (!calls) return;
  showLines(*calls,
            "SELECT seq||char(9)||process||char(9)||operation||char(9)||arguments||char(9)||code "
            "FROM call ORDER BY seq",
            show);
}

}  // namespace sandbox
