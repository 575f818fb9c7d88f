// frame.h: what the storage client library holds in a process, and the frame of every call.
//
// One mutex guards everything: an entry point takes it first and releases it last, so that calls of
// several threads follow each other and are recorded in their real order. vltSetUp fills the state,
// vltCleanUp empties it.
//
// An entry point calls enter() or enterSession() with its body and, if it has them, with the text
// of its arguments for the record and with what an armed fault has to do. The frame does the rest:
// handle look-up, faults, recording, and turning exceptions into codes.
#ifndef SANDBOX_LIBRARY_FRAME_H
#define SANDBOX_LIBRARY_FRAME_H

#include <cstdint>
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

  ClientOptions options;  // with the node that was logged on
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

  // Null if no session has this handle.
  Session* find(std::uint32_t handle);
};

Library& library();

// The control of a store: the process's own if it uses the same store; null if there is no store at
// the path.
std::shared_ptr<Control> controlFor(const std::string& storePath);

// The return code of the exception that is being handled.
std::int16_t codeOfException();

// Which sessions an operation accepts, and how often it looks for newly armed faults.
enum class Access {
  kLoggedOn,     // not those whose password has expired
  kEvenExpired,  // any
  kPerObject,    // as kLoggedOn; runs once per object, and so does not look again
};

// Throws Refusal unless the session is there and accepted.
Session& requireSession(Session* session, Access access);

// Reads the control's state again; a failing store shows in the operation itself.
void refreshQuietly(Control* control);

// What most entry points do not need.
inline constexpr auto kNoArguments = [] { return std::string(); };
inline constexpr auto kNothingToUndo = [](const Fault&) {};

// Runs the body, or the armed fault instead of it, and records the call. A call that cannot be
// recorded, or whose arguments cannot be read, was made all the same: nothing is reported. The
// caller holds the mutex.
template <typename Body, typename Describe, typename OnFault>
std::int16_t perform(Control* control, const char* operation, const Body& body,
                     const Describe& describe, const OnFault& onFault) {
  std::int16_t code = VLT_RC_OK;
  try {
    const auto fault = control != nullptr ? control->strike(operation) : std::nullopt;
    if (fault) onFault(*fault);
    code = fault ? fault->code : static_cast<std::int16_t>(body());
  } catch (...) {
    code = codeOfException();
  }
  try {
    if (control != nullptr && control->recording()) control->record(operation, describe(), code);
  } catch (...) {
    // ignore: see above
  }
  return code;
}

// The frame of an operation without a session; `choose` gives the control of the store that it is
// charged to.
template <typename Choose, typename Body, typename Describe>
std::int16_t enterCharged(const char* operation, const Choose& choose, const Body& body,
                          const Describe& describe) noexcept {
  try {
    const std::lock_guard lock(library().mutex);
    const std::shared_ptr<Control> control = choose();
    refreshQuietly(control.get());
    return perform(
        control.get(), operation, [&] { return body(control); }, describe, kNothingToUndo);
  } catch (...) {
    return codeOfException();
  }
}

// The same, charged to the process's store.
template <typename Body, typename Describe = decltype(kNoArguments)>
std::int16_t enter(const char* operation, const Body& body,
                   const Describe& describe = kNoArguments) noexcept {
  return enterCharged(
      operation, [] { return library().control; },
      [&](const std::shared_ptr<Control>&) { return body(); }, describe);
}

// The frame of an operation of a session: `body` takes the Session. The record begins with the
// handle, and `describe` adds to it.
template <typename Body, typename Describe = decltype(kNoArguments),
          typename OnFault = decltype(kNothingToUndo)>
std::int16_t enterSession(const char* operation, std::uint32_t handle, Access access,
                          const Body& body, const Describe& describe = kNoArguments,
                          const OnFault& onFault = kNothingToUndo) noexcept {
  const std::lock_guard lock(library().mutex);
  Session* session = library().find(handle);
  // Held here, because the body may end the session.
  const std::shared_ptr<Control> control =
      session != nullptr ? session->control : library().control;
  if (access != Access::kPerObject) refreshQuietly(control.get());
  return perform(
      control.get(), operation, [&] { return body(requireSession(session, access)); },
      [&] { return "handle=" + std::to_string(handle) + describe(); }, onFault);
}

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_FRAME_H
