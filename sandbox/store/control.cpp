// control.cpp: faults to order and the record of calls.
#include "sandbox/store/control.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <thread>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr const char* kCallSchema = R"(
CREATE TABLE IF NOT EXISTS call(
  seq INTEGER PRIMARY KEY AUTOINCREMENT,
  process INTEGER NOT NULL,
  operation TEXT NOT NULL,
  arguments TEXT NOT NULL,
  code INTEGER NOT NULL);
)";

// Without "vlt". The five operations that return nothing are not here: they cannot fail.
constexpr std::array<std::string_view, 40> kFallibleOperations = {"BeginGetData",
                                                                  "BeginQuery",
                                                                  "BeginTxn",
                                                                  "BindMC",
                                                                  "ChangePW",
                                                                  "CleanUp",
                                                                  "DeleteAccess",
                                                                  "DeleteFS",
                                                                  "DeleteObj",
                                                                  "EndGetData",
                                                                  "EndGetDataEx",
                                                                  "EndGetObj",
                                                                  "EndQuery",
                                                                  "EndSendObj",
                                                                  "EndSendObjEx",
                                                                  "EndTxn",
                                                                  "EndTxnEx",
                                                                  "GetData",
                                                                  "GetNextQObj",
                                                                  "GetObj",
                                                                  "GroupHandler",
                                                                  "Init",
                                                                  "InitEx",
                                                                  "LogEventEx",
                                                                  "LogMessage",
                                                                  "QueryAccess",
                                                                  "QueryCliOptions",
                                                                  "QuerySessInfo",
                                                                  "QuerySessOptions",
                                                                  "RegisterFS",
                                                                  "RenameObj",
                                                                  "RCMsg",
                                                                  "RCMsgEx",
                                                                  "SetAccess",
                                                                  "SendData",
                                                                  "SendObj",
                                                                  "SetUp",
                                                                  "Terminate",
                                                                  "UpdateFS",
                                                                  "UpdateObj"};

Fault readFault(const Statement& row) {
  Fault fault;
  fault.id = row.integer(0);
  fault.operation = row.text(1);
  fault.code = static_cast<std::int16_t>(row.integer(2));
  fault.reason = static_cast<std::uint16_t>(row.integer(3));
  fault.remaining = row.integer(4);
  fault.times = row.integer(5);
  return fault;
}

}  // namespace

std::string callsPath(const std::string& storePath) { return storePath + "-calls"; }

std::optional<std::string> findOperation(std::string_view name) {
  if (equalIgnoringCase(name.substr(0, 3), "vlt")) name.remove_prefix(3);
  for (std::string_view operation : kFallibleOperations)
    if (equalIgnoringCase(name, operation)) return "vlt" + std::string(operation);
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
  std::optional<Fault> fault;
  {
    Statement oldest = store_.database().prepare(
        "SELECT id,operation,code,reason,remaining,times FROM fault WHERE operation=? "
        "ORDER BY id LIMIT 1");
    oldest.bind(1, operation);
    if (!oldest.step()) return std::nullopt;
    fault = readFault(oldest);
  }
  countDown(*fault);
  counting.commit();
  if (fault->remaining > 0) return std::nullopt;
  return fault;
}

void Control::countDown(const Fault& fault) {
  const char* sql = "DELETE FROM fault WHERE id=?";
  if (fault.remaining > 0)
    sql = "UPDATE fault SET remaining=remaining-1 WHERE id=?";
  else if (fault.times > 1)
    sql = "UPDATE fault SET times=times-1 WHERE id=?";
  store_.database().prepare(sql).bind(1, fault.id).run();
}

void Control::record(std::string_view operation, std::string_view arguments, std::int16_t code) {
  if (!insertCall_) {
    calls_.emplace(callsPath(store_.path()), Database::Mode::kExisting);
    insertCall_ =
        calls_->prepare("INSERT INTO call(process,operation,arguments,code) VALUES(?,?,?,?)");
  }
  insertCall_->bind(1, std::int64_t{getpid()})
      .bind(2, operation)
      .bind(3, arguments)
      .bind(4, std::int64_t{code})
      .run();
}

void Control::arm(const Fault& fault) {
  store_.database()
      .prepare("INSERT INTO fault(operation,code,reason,remaining,times) VALUES(?,?,?,?,?)")
      .bind(1, fault.operation)
      .bind(2, std::int64_t{fault.code})
      .bind(3, std::int64_t{fault.reason})
      .bind(4, fault.remaining)
      .bind(5, fault.times)
      .run();
}

void Control::clearFaults() { store_.database().execute("DELETE FROM fault"); }

std::vector<Fault> Control::faults() {
  std::vector<Fault> result;
  Statement all = store_.database().prepare(
      "SELECT id,operation,code,reason,remaining,times FROM fault ORDER BY id");
  while (all.step()) result.push_back(readFault(all));
  return result;
}

void Control::switchRecording(bool on) {
  // Made before anybody writes to it, so that programs only ever find it complete.
  if (on)
    Database(callsPath(store_.path()), Database::Mode::kCreate)
        .execute(std::string("PRAGMA journal_mode=WAL;") + kCallSchema);
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

void Control::eachCall(const std::function<void(const Call&)>& show) {
  std::optional<Database> calls = openCalls();
  if (!calls) return;
  Statement all =
      calls->prepare("SELECT seq,process,operation,arguments,code FROM call ORDER BY seq");
  Call call;
  while (all.step()) {
    call.sequence = all.integer(0);
    call.process = all.integer(1);
    call.operation = all.text(2);
    call.arguments = all.text(3);
    call.code = static_cast<std::int16_t>(all.integer(4));
    show(call);
  }
}

}  // namespace sandbox
