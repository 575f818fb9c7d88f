// frame.cpp: what the storage client library holds in a process, and the frame of every call.
#include "sandbox/library/frame.h"

namespace sandbox {

Library& library() {
  static Library state;
  return state;
}

Session* Library::find(std::uint32_t handle) {
  const auto found = sessions.find(handle);
  return found != sessions.end() ? found->second.get() : nullptr;
}

std::shared_ptr<Control> controlFor(const std::string& storePath) {
  const std::shared_ptr<Control>& shared = library().control;
  if (shared && shared->storePath() == storePath) return shared;
  try {
    return std::make_shared<Control>(storePath);
  } catch (const StoreError&) {
    return nullptr;
  }
}

std::int16_t codeOfException() {
  try {
    throw;
  } catch (const Refusal& refusal) {
    return refusal.code;
  } catch (...) {
    // A StoreError, or no memory left: either way the request was not carried out.
    return VLT_RC_STORE_FAILED;
  }
}

Session& requireSession(Session* session, Access access) {
  require(library().isSetUp, VLT_RC_NOT_SET_UP);
  require(session != nullptr, VLT_RC_BAD_HANDLE);
  require(access == Access::kEvenExpired || !session->expired, VLT_RC_PASSWORD_EXPIRED);
  return *session;
}

void refreshQuietly(Control* control) {
  try {
    if (control != nullptr) control->refresh();
  } catch (const StoreError&) {
    // ignore: the operation meets the same failure, or does not need the store
  }
}

}  // namespace sandbox
