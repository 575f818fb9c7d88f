// control.h: faults to order and the record of calls.
//
// An armed fault makes the client library fail an operation instead of carrying it out; the record
// lists the calls that programs made, in one order over all processes. Two tables, the first in the
// store, the second in a file beside it, `<store>-calls`:
//
//   fault  id          ascending: of one operation's faults the oldest acts until it is used up
//          operation   "vltDeleteObj"
//          code        the code to return
//          reason      for vltEndTxn: the reason to give
//          remaining   calls that it still lets pass
//          times       calls that it still fails; a fault with 0 is removed
//   call   seq         ascending over all processes
//          process     process id
//          operation
//          arguments   short text, never a password
//          code
//
// The record is a file of its own because an open query keeps the store's write-ahead log from
// being emptied: with a million recorded calls it would grow by gigabytes.
//
// Counting happens in the store, so that a fault for the third call fails the third call no matter
// which processes made them.
#ifndef SANDBOX_STORE_CONTROL_H
#define SANDBOX_STORE_CONTROL_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/store/store.h"

namespace sandbox {

struct Fault {
  std::int64_t id = 0;
  std::string operation;
  std::int16_t code = 0;
  std::uint16_t reason = 0;
  std::int64_t remaining = 0;
  std::int64_t times = 1;
};

// The full name ("vltEndTxn") of an operation that returns a code; `name` is case-insensitive, with
// or without "vlt". Nothing for any other text.
std::optional<std::string> findOperation(std::string_view name);

// A program's access to faults and recording. It has a connection of its own, so that its counting
// and recording are never part of another transaction.
class Control {
 public:
  explicit Control(const std::string& storePath) : store_(storePath) { refresh(); }

  const std::string& storePath() const { return store_.path(); }

  // Reads what is armed, whether calls are recorded, and the latency. Three look-ups of a few
  // microseconds: callers do it for every operation except those that run once per object.
  void refresh();

  // The fault that acts on this call, counted down; nothing if the call is to be carried out.
  // Costs nothing while no fault is armed and the server has no latency.
  std::optional<Fault> strike(std::string_view operation);

  bool recording() const { return recording_; }
  void record(std::string_view operation, std::string_view arguments, std::int16_t code);

  // For the administrator. Lists are given line by line, with tabs between the fields.
  using ShowLine = std::function<void(std::string_view)>;
  void arm(const Fault& fault);
  void clearFaults();
  void listFaults(const ShowLine& show);
  void switchRecording(bool on);
  void clearCalls();
  void listCalls(const ShowLine& show);

 private:
  void countDown(const Fault& fault);
  // The file of the record, if there is one.
  std::optional<Database> openCalls() const;

  Store store_;
  std::optional<Database> calls_;  // opened by the first call that is recorded
  std::optional<Statement> insertCall_;
  bool recording_ = false;
  bool armed_ = false;
  std::chrono::milliseconds latency_{0};
};

}  // namespace sandbox

#endif  // SANDBOX_STORE_CONTROL_H
