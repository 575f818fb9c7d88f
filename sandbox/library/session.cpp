// session.cpp: entry points for set-up and clean-up, and for what a process or session is like.
#include "sandbox/library/frame.h"

namespace sandbox {
namespace {

constexpr std::uint16_t kServerPort = 4813;

ClientOptions optionsOf(const VltEnvSetUp* envSetUp) {
  requireRecord(envSetUp, 4);
  checkedText(envSetUp->vltiDir);
  checkedText(envSetUp->vltiLog);
  checkedText(envSetUp->logName);
  return readClientOptions(std::string(checkedText(envSetUp->vltiConfig)));
}

// The control of the store that the process is going to use; null if the arguments do not lead to
// one, which the operation itself reports or accepts.
std::shared_ptr<Control> controlOf(const VltEnvSetUp* envSetUp) {
  try {
    return controlFor(optionsOf(envSetUp).storePath);
  } catch (const Refusal&) {
    return nullptr;
  }
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

}  // namespace
}  // namespace sandbox

using namespace sandbox;

std::int16_t vltSetUp(std::uint8_t multithread, const VltEnvSetUp* envSetUp) {
  return enterCharged(
      __func__,
      // A repeated call counts for the store in use, not for the one that it names.
      [&] { return library().isSetUp ? library().control : controlOf(envSetUp); },
      [&](const std::shared_ptr<Control>& control) {
        require(multithread <= VLT_MULTITHREAD);
        require(!library().isSetUp, VLT_RC_BAD_SEQUENCE);
        library().options = optionsOf(envSetUp);
        library().control = control;
        library().isSetUp = true;
        return VLT_RC_OK;
      },
      [&] {
        std::string text = "multithread=" + std::to_string(multithread);
        if (envSetUp == nullptr || envSetUp->structVersion != 4) return text;
        return text.append(" config=").append(checkedText(envSetUp->vltiConfig));
      });
}

std::int16_t vltCleanUp(std::uint8_t multithread) {
  return enter(
      __func__,
      [&] {
        require(multithread <= VLT_MULTITHREAD);
        require(library().isSetUp, VLT_RC_NOT_SET_UP);
        library().sessions.clear();
        library().control.reset();
        library().options = ClientOptions();
        library().isSetUp = false;
        return VLT_RC_OK;
      },
      [&] { return "multithread=" + std::to_string(multithread); });
}

std::int16_t vltTerminate(std::uint32_t handle) {
  return enterSession(__func__, handle, Access::kEvenExpired, [&](Session&) {
    library().sessions.erase(handle);
    return VLT_RC_OK;
  });
}

std::int16_t vltQueryCliOptions(VltOptions* options) {
  return enter(__func__, [&] {
    require(library().isSetUp, VLT_RC_NOT_SET_UP);
    requireRecord(options, 1);
    fillOptions(library().options, *options);
    return VLT_RC_OK;
  });
}

std::int16_t vltQuerySessOptions(std::uint32_t handle, VltOptions* options) {
  return enterSession(__func__, handle, Access::kEvenExpired, [&](Session& session) {
    requireRecord(options, 1);
    fillOptions(session.options, *options);
    return VLT_RC_OK;
  });
}

std::int16_t vltQuerySessInfo(std::uint32_t handle, VltSessInfo* info) {
  return enterSession(__func__, handle, Access::kEvenExpired, [&](Session& session) {
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
  // There is no code for a wrong version: the record is left alone.
  if (version == nullptr || version->structVersion != kLibraryVersion.structVersion) return;
  *version = kLibraryVersion;
}
