// session.cpp: entry points that set the library up and tell about the process and a
// session.
#include <algorithm>

#include "sandbox/library/state.h"

namespace sandbox {
namespace {

constexpr std::uint16_t kServerPort = 4813;

void requireMultithreadFlag(std::uint8_t multithread) { require(multithread <= VLT_MULTITHREAD); }

ClientOptions optionsOf(const VltEnvSetUp* envSetUp) {
  requireRecord(envSetUp, 4);
  checkedText(envSetUp->vltiDir);
  checkedText(envSetUp->vltiLog);
  checkedText(envSetUp->logName);
  return readClientOptions(std::string(checkedText(envSetUp->vltiConfig)));
}

// The store that the process is going to use, for faults and recording; null when the arguments do
// not lead to one, which the operation itself reports or accepts.
std::shared_ptr<Control> controlOf(const VltEnvSetUp* envSetUp) {
  try {
    return controlFor(optionsOf(envSetUp).storePath);
  } catch (const Refusal&) {
    return nullptr;
  }
}

std::int16_t setUp(std::uint8_t multithread, const VltEnvSetUp* envSetUp,
                   const std::shared_ptr<Control>& control) {
  requireMultithreadFlag(multithread);
  require(!library().isSetUp, VLT_RC_BAD_SEQUENCE);
  library().options = optionsOf(envSetUp);
  library().control = control;
  library().isSetUp = true;
  return VLT_RC_OK;
}

void fillSessionInfo(Session& session, VltSessInfo& info) {
  const std::optional<Node> node = session.store.findNode(session.node.name);
  require(node.has_value(), VLT_RC_UNKNOWN_NODE);
  fillText(info.serverHost, session.options.serverAddress);
  info.serverPort = kServerPort;
  fillText(info.serverType, "Linux/x86_64");
  info.serverVersion = kLibraryVersion.version;
  info.serverRelease = kLibraryVersion.release;
  info.serverLevel = kLibraryVersion.level;
  info.serverSubLevel = kLibraryVersion.subLevel;
  fillText(info.nodeName, node->name);
  fillText(info.owner, session.owner);
  fillText(info.nodeType, "Linux");
  info.fileSpaceDelimiter = '/';
  info.highLevelDelimiter = '/';
  info.compression = session.options.compression ? 1 : 0;
  info.backupDeleteAllowed = node->mayDelete ? 1 : 0;
  info.maxObjPerTxn = static_cast<std::uint16_t>(session.store.setting("maxObjPerTxn"));
  fillText(info.domainName, "SANDBOX_DOMAIN");
  fillText(info.policySetName, "SANDBOX_RULES");
}

std::string multithreadText(std::uint8_t multithread) {
  return "multithread=" + std::to_string(multithread);
}

}  // namespace
}  // namespace sandbox

using namespace sandbox;

std::int16_t vltSetUp(std::uint8_t multithread, const VltEnvSetUp* envSetUp) {
  try {
    const std::lock_guard lock(library().mutex);
    // A repeated call is charged to the store that is in use, not to the one that it names.
    const std::shared_ptr<Control> control =
        library().isSetUp ? library().control : controlOf(envSetUp);
    refreshQuietly(control.get());
    return perform(
        control.get(), __func__,
        [&] {
          std::string text = multithreadText(multithread);
          if (envSetUp == nullptr || envSetUp->structVersion != 4) return text;
          return text.append(" config=").append(checkedText(envSetUp->vltiConfig));
        },
        [&] { return setUp(multithread, envSetUp, control); }, kNothingToUndo);
  } catch (...) {
    return codeOfException();
  }
}

std::int16_t vltCleanUp(std::uint8_t multithread) {
  return enter(
      __func__, [&] { return multithreadText(multithread); },
      [&]() -> std::int16_t {
        requireMultithreadFlag(multithread);
        require(library().isSetUp, VLT_RC_NOT_SET_UP);
        library().sessions.clear();
        library().control.reset();
        library().options = ClientOptions();
        library().isSetUp = false;
        return VLT_RC_OK;
      });
}

std::int16_t vltTerminate(std::uint32_t handle) {
  return enterSession(
      __func__, handle, Access::kEvenExpired, Pace::kEachCall, [&] { return handleText(handle); },
      [&](Session&) -> std::int16_t {
        library().sessions.erase(handle);
        return VLT_RC_OK;
      });
}

std::int16_t vltQueryCliOptions(VltOptions* options) {
  return enter(
      __func__, [] { return std::string(); },
      [&]() -> std::int16_t {
        require(library().isSetUp, VLT_RC_NOT_SET_UP);
        requireRecord(options, 1);
        fillOptions(library().options, *options);
        return VLT_RC_OK;
      });
}

std::int16_t vltQuerySessOptions(std::uint32_t handle, VltOptions* options) {
  return enterSession(
      __func__, handle, Access::kEvenExpired, Pace::kEachCall, [&] { return handleText(handle); },
      [&](Session& session) -> std::int16_t {
        requireRecord(options, 1);
        fillOptions(session.options, *options);
        return VLT_RC_OK;
      });
}

std::int16_t vltQuerySessInfo(std::uint32_t handle, VltSessInfo* info) {
  return enterSession(
      __func__, handle, Access::kEvenExpired, Pace::kEachCall, [&] { return handleText(handle); },
      [&](Session& session) -> std::int16_t {
        requireRecord(info, 1);
        fillSessionInfo(session, *info);
        return VLT_RC_OK;
      });
}

void vltQueryApiVersion(VltApiVersion* version) {
  if (version == nullptr) return;
  *version = {kLibraryVersion.version, kLibraryVersion.release, kLibraryVersion.level};
}

void vltQueryApiVersionEx(VltApiVersionEx* version) {
  // The caller cannot be told of a wrong version: its record stays as it is.
  if (version != nullptr && version->structVersion == kLibraryVersion.structVersion)
    *version = kLibraryVersion;
}
