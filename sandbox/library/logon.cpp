// logon.cpp: entry points that need a password: logon and the change of the password.
#include <unistd.h>

#include "sandbox/library/frame.h"
#include "sandbox/store/secrets.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

std::string hostName() {
  char name[VLT_MAX_NODE + 1] = "";
  gethostname(name, sizeof name - 1);  // ignore: the server does not know an empty name
  return name;
}

// The session's options: from its own file, else the process's; the option text overrides them.
ClientOptions optionsOf(const VltInitExIn& in) {
  const std::string_view file = checkedText(in.configFile, VLT_MAX_PATH);
  ClientOptions options = file.empty() ? library().options : readClientOptions(std::string(file));
  if (in.options != nullptr) applyOptionText(in.options, options);
  const std::string_view node = checkedText(in.clientNodeName, VLT_MAX_NODE);
  if (!node.empty()) options.nodeName = node;
  if (options.nodeName.empty()) options.nodeName = hostName();
  options.nodeName = upperCase(options.nodeName);
  return options;
}

void requireInput(const VltInitExIn* in) {
  requireRecord(in, 5);
  requireRecord(in->apiVersion, kLibraryVersion.structVersion);
  if (in->appVersion != nullptr) requireRecord(in->appVersion, 1);
  require(in->clientKind >= VLT_CLIENT_KIND_USER &&
          in->clientKind <= VLT_CLIENT_KIND_DATABASE_AGENT);
}

PasswordFile passwordFileOf(const ClientOptions& options) {
  return PasswordFile(passwordDirectoryOf(options), options.nodeName);
}

// With generated passwords the given one is tried first, then the one that the library keeps.
void requirePassword(const ClientOptions& options, std::string_view given, const Node& node) {
  const bool right = digestOf(given) == node.password;
  if (!options.generatedPassword) return require(right, VLT_RC_WRONG_PASSWORD);
  const PasswordFile file = passwordFileOf(options);
  if (right) return require(file.write(given), VLT_RC_BAD_OPTION);
  require(file.readDigest() == node.password, VLT_RC_WRONG_PASSWORD);
}

std::unique_ptr<Session> openSession(const ClientOptions& options,
                                     const std::shared_ptr<Control>& control) {
  try {
    return std::make_unique<Session>(options, control);
  } catch (const StoreError&) {
    throw Refusal{VLT_RC_SERVER_UNREACHABLE};
  }
}

int logOn(const VltInitExIn* in, const std::shared_ptr<Control>& control, std::uint32_t* handle,
          VltInitExOut* out) {
  require(library().isSetUp, VLT_RC_NOT_SET_UP);
  requireInput(in);
  const ClientOptions options = optionsOf(*in);
  const std::string_view owner = checkedText(in->clientOwnerName, VLT_MAX_OWNER);
  const std::string_view password = checkedText(in->clientPassword, VLT_MAX_PASSWORD);
  // Only the node itself may open its session.
  const std::string_view user = checkedText(in->userName, VLT_MAX_NODE);
  require(user.empty() || equalIgnoringCase(user, options.nodeName), VLT_RC_NOT_AUTHORIZED);
  if (out != nullptr) requireRecord(out, 1);
  std::unique_ptr<Session> session = openSession(options, control);
  const std::optional<Node> node = session->store.findNode(options.nodeName);
  require(node.has_value(), VLT_RC_UNKNOWN_NODE);
  requirePassword(options, password, *node);
  session->node = *node;
  session->owner = owner;
  session->expired = node->expired;
  *handle = library().nextHandle++;
  library().sessions.emplace(*handle, std::move(session));
  if (out != nullptr) {
    *out = {1, kLibraryVersion.version, kLibraryVersion.release, kLibraryVersion.level,
            kLibraryVersion.subLevel};
  }
  return node->expired ? VLT_RC_PASSWORD_EXPIRED : VLT_RC_OK;
}

// The control of the store that the logon leads to. If the arguments are wrong, which the logon
// itself reports, the process's own.
std::shared_ptr<Control> controlOf(const VltInitExIn* in) {
  try {
    requireInput(in);
    return controlFor(optionsOf(*in).storePath);
  } catch (const Refusal&) {
    return library().control;
  }
}

std::string logonText(const VltInitExIn* in, const std::uint32_t* handle) {
  std::string text;
  if (in == nullptr || in->structVersion != 5) return text;
  const auto add = [&](const char* name, const char* value) {
    if (value != nullptr) text.append(name).append("=\"").append(value).append("\" ");
  };
  add("node", in->clientNodeName);
  add("owner", in->clientOwnerName);
  add("application", in->applicationType);
  add("config", in->configFile);
  add("options", in->options);
  text.append("kind=").append(std::to_string(in->clientKind)).append(" -> handle=");
  return text.append(handle != nullptr ? std::to_string(*handle) : "-");
}

std::int16_t changePassword(Session& session, const char* oldPassword, const char* newPassword) {
  require(oldPassword != nullptr && newPassword != nullptr);
  const std::string_view oldText = checkedText(oldPassword, VLT_MAX_PASSWORD);
  const std::string_view newText = checkedText(newPassword, VLT_MAX_PASSWORD);
  require(!newText.empty());
  const std::optional<Node> node = session.store.findNode(session.node.name);
  require(node.has_value(), VLT_RC_UNKNOWN_NODE);
  require(node->password == digestOf(oldText), VLT_RC_WRONG_PASSWORD);
  session.store.setPassword(node->id, newText);
  session.expired = false;
  // Last, so that the file never holds a password that the server does not accept yet.
  if (session.options.generatedPassword) {
    require(passwordFileOf(session.options).write(newText), VLT_RC_BAD_OPTION);
  }
  return VLT_RC_OK;
}

}  // namespace
}  // namespace sandbox

using namespace sandbox;

std::int16_t vltInitEx(std::uint32_t* handle, const VltInitExIn* in, VltInitExOut* out) {
  if (handle != nullptr) *handle = 0;
  return enterCharged(
      __func__, [&] { return library().isSetUp ? controlOf(in) : library().control; },
      [&](const std::shared_ptr<Control>& control) {
        require(handle != nullptr);
        return logOn(in, control, handle, out);
      },
      [&] { return logonText(in, handle); });
}

std::int16_t vltChangePW(std::uint32_t handle, const char* oldPassword, const char* newPassword) {
  return enterSession(__func__, handle, Access::kEvenExpired, [&](Session& session) {
    return changePassword(session, oldPassword, newPassword);
  });
}
