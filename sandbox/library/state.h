// state.h: what the storage client library holds in a process, and the frame of every call.
//
// One mutex guards everything: an entry point takes it first and gives it up last, so that calls of
// several threads follow each other and the recorded order is the real one. The state begins empty,
// is made by vltSetUp and emptied by vltCleanUp.
//
// An entry point is written as a call of enter() or enterSession() with three parts: the text of
// its arguments for the record, its body, and where needed what an armed fault leaves behind. The
// frame does the rest: handle look-up, faults, recording, and turning exceptions into codes.
#ifndef SANDBOX_LIBRARY_STATE_H
#define SANDBOX_LIBRARY_STATE_H

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "sandbox/library/checks.h"
#include "sandbox/library/deletions.h"
#include "sandbox/library/options.h"
#include "sandbox/library/query.h"
#include "sandbox/store/control.h"
#include "sandbox/store/store.h"

namespace sandbox {

struct Session {
  Session(ClientOptions sessionOptions, std::shared_ptr<Control> sessionControl)
      : options(std::move(sessionOptions)),
        control(std::move(sessionControl)),
        store(options.storePath) {}

  ClientOptions options;  // with the node name in force
  std::shared_ptr<Control> control;
  Store store;
  Node node;
  std::string owner;
  bool expired = false;
  std::unique_ptr<ObjectQuery> query;      // null: none open
  std::unique_ptr<Deletions> transaction;  // null: none open; dropping it aborts
};

struct Library {
  std::mutex mutex;
  bool isSetUp = false;
  ClientOptions options;
  std::shared_ptr<Control> control;  // null: there was no store at set-up
  std::map<std::uint32_t, std::unique_ptr<Session>> sessions;
  std::uint32_t nextHandle = 1;  // a handle is never used twice in a process

  // Null when no session has this handle.
  Session* find(std::uint32_t handle);
};

Library& library();

// The control of a store, shared with the process where it is the same; null when the path leads to
// no store.
std::shared_ptr<Control> controlFor(const std::string& storePath);

// The return code of the exception that is being handled.
std::int16_t codeOfException();

// Which sessions an operation accepts.
enum class Access {
  kLoggedOn,  // not those whose password has expired
  kEvenExpired,
};

// Throws Refusal unless the session is there and accepted.
Session& requireSession(Session* session, Access access);

// Writes the call to the record. A call that cannot be recorded was none the less made, so nothing
// is reported; one whose arguments cannot be read is recorded without them.
template <typename Describe>
void recordQuietly(Control& control, const char* operation, const Describe& describe,
                   std::int16_t code) {
  try {
    std::string arguments = "(unreadable)";
    try {
      arguments = describe();
    } catch (const Refusal&) {
    }
    control.record(operation, arguments, code);
  } catch (...) {
  }
}

// Runs the body, or the armed fault in its place, and records the call.
template <typename Describe, typename Body, typename OnFault>
std::int16_t perform(Control* control, const char* operation, const Describe& describe,
                     const Body& body, const OnFault& onFault) {
  std::int16_t code = VLT_RC_OK;
  try {
    const std::optional<Fault> fault =
        control != nullptr ? control->strike(operation) : std::nullopt;
    if (fault) {
      onFault(*fault);
      code = fault->code;
    } else {
      code = body();
    }
  } catch (...) {
    code = codeOfException();
  }
  if (control != nullptr && control->recording())
    recordQuietly(*control, operation, describe, code);
  return code;
}

// Reads the control's state again; a failing store shows in the operation itself.
void refreshQuietly(Control* control);

inline constexpr auto kNothingToUndo = [](const Fault&) {};

// The frame of an operation without a session.
template <typename Describe, typename Body>
std::int16_t enter(const char* operation, const Describe& describe, const Body& body) noexcept {
  const std::lock_guard lock(library().mutex);
  const std::shared_ptr<Control> control = library().control;
  refreshQuietly(control.get());
  return perform(control.get(), operation, describe, body, kNothingToUndo);
}

// How often an operation looks for newly armed faults.
enum class Pace {
  kEachCall,
  kPerObject,  // runs once per object and trusts the last look
};

// The frame of an operation of a session: `body` takes the Session.
template <typename Describe, typename Body, typename OnFault = decltype(kNothingToUndo)>
std::int16_t enterSession(const char* operation, std::uint32_t handle, Access access, Pace pace,
                          const Describe& describe, const Body& body,
                          const OnFault& onFault = kNothingToUndo) noexcept {
  const std::lock_guard lock(library().mutex);
  Session* session = library().find(handle);
  // Kept here, because the body may end the session.
  const std::shared_ptr<Control> control =
      session != nullptr ? session->control : library().control;
  if (pace == Pace::kEachCall) refreshQuietly(control.get());
  return perform(
      control.get(), operation, describe,
      [&]() -> std::int16_t { return body(requireSession(session, access)); }, onFault);
}

// "handle=1", the beginning of most argument texts.
std::string handleText(std::uint32_t handle);

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_STATE_H
