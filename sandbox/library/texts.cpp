// texts.cpp: the texts of the return codes, and their entry points.
//
// A text is an identifier of nine bytes, a blank, what happened, and what to do: "ZYL0051E The
// server refused the password. ...".
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "sandbox/library/frame.h"

namespace sandbox {
namespace {

struct CodeText {
  std::int16_t code;
  char severity;
  std::string_view text;
};

constexpr std::size_t kIdentifier = sizeof "ZYL0000E " - 1;

constexpr CodeText kTexts[] = {
    {VLT_RC_SERVER_UNREACHABLE, 'E',
     "The storage server does not answer. Check that it is running, and check the STORE option in "
     "the client options file. Then try again."},
    {VLT_RC_OK, 'I', "The operation was successful."},
    {VLT_RC_NO_MATCH, 'W',
     "No object on the server matches, or the object has been deleted. List the objects again and "
     "check filespace, names, owner and dates."},
    {VLT_RC_WRONG_PASSWORD, 'E',
     "The server refused the password, or no password is stored for this node. Enter the node's "
     "current password, or have the server's administrator set a new one."},
    {VLT_RC_PASSWORD_EXPIRED, 'E',
     "The node's password has expired. Change the password, then try again."},
    {VLT_RC_UNKNOWN_NODE, 'E',
     "The server does not know this node. Check the node name in the options files, or have the "
     "server's administrator register the node."},
    {VLT_RC_NOT_AUTHORIZED, 'E',
     "The node is not authorized to do this. Ask the server's administrator for the right, for "
     "example to delete backup objects."},
    {VLT_RC_FINISHED, 'I', "The query has no further object."},
    {VLT_RC_UNKNOWN_FORMAT, 'W',
     "The object was stored in a format that this client cannot show. Use a newer client for this "
     "object; the query continues."},
    {VLT_RC_MORE_DATA, 'I', "An object was returned, and more may follow."},
    {VLT_RC_CHECK_REASON, 'E',
     "The server aborted the transaction and changed nothing. The reason code names the cause: "
     "remove it and repeat the transaction."},
    {VLT_RC_NOT_SET_UP, 'S',
     "The client library was called before it was set up. This is an error in the calling program: "
     "report it."},
    {VLT_RC_BAD_HANDLE, 'S',
     "There is no session with this handle. This is an error in the calling program: report it."},
    {VLT_RC_BAD_STRUCT_VERSION, 'S',
     "A record has a version that this client library does not know. Install matching levels of "
     "the program and the client library."},
    {VLT_RC_BAD_SEQUENCE, 'S',
     "The call is not allowed at this point. This is an error in the calling program: report it."},
    {VLT_RC_BAD_ARGUMENT, 'E',
     "A name or value is missing, too long or out of range. Check the filespace, node and owner "
     "names in the options files; a filespace begins with \"/\"."},
    {VLT_RC_BUFFER_TOO_SMALL, 'S',
     "The buffer is too small for the object. Install matching levels of the program and the "
     "client library."},
    {VLT_RC_TXN_LIMIT, 'E',
     "The transaction holds more objects than the server takes at once. Process fewer objects in "
     "one transaction, or have the server's administrator raise the limit."},
    {VLT_RC_NOT_SUPPORTED, 'E', "This client library does not offer the function."},
    {VLT_RC_BAD_OPTION, 'E',
     "The client options cannot be read, or name a directory that cannot be used. Check that the "
     "client options file is readable, its keywords and values, and the password directory."},
    {VLT_RC_STORE_FAILED, 'S',
     "The server could not read or write its own data. Have the server's administrator check its "
     "disk space and log, then try again."},
};

const CodeText* findText(std::int16_t code) {
  const auto found = std::ranges::find(kTexts, code, &CodeText::code);
  return found != std::end(kTexts) ? found : nullptr;
}

std::string fullText(std::int16_t code) {
  static constexpr CodeText kUnknown = {
      VLT_RC_BAD_ARGUMENT, 'E', "This return code is not known to the client library. Code: "};
  const CodeText* known = findText(code);
  const CodeText& entry = known != nullptr ? *known : kUnknown;
  const std::string number = std::to_string(std::abs(int{entry.code}));
  std::string text = "ZYL" + std::string(4 - number.size(), '0') + number;
  text.append(1, entry.severity).append(" ").append(entry.text);
  return known != nullptr ? text : text + std::to_string(code);
}

std::int16_t resultFor(std::int16_t code) {
  return findText(code) != nullptr ? VLT_RC_OK : VLT_RC_BAD_ARGUMENT;
}

std::string messageArguments(std::uint32_t handle, std::int16_t rc) {
  return "handle=" + std::to_string(handle) + " rc=" + std::to_string(rc);
}

}  // namespace
}  // namespace sandbox

using namespace sandbox;

// Needs neither set-up nor session: a text is mostly wanted because one of them failed.
std::int16_t vltRCMsg(std::uint32_t handle, std::int16_t rc, char* text) {
  return enter(
      __func__,
      [&] {
        require(text != nullptr);
        const std::string full = fullText(rc);
        std::memcpy(text, full.c_str(), full.size() + 1);
        return resultFor(rc);
      },
      [&] { return messageArguments(handle, rc); });
}

std::int16_t vltRCMsgEx(const VltRcMsgIn* in, VltRcMsgOut* out) {
  return enter(
      __func__,
      [&] {
        requireRecord(in, 1);
        requireRecord(out, 1);
        require(out->text != nullptr && out->textSize > 0);
        const std::string text = fullText(in->rc).substr(in->withIdentifier == 0 ? kIdentifier : 0);
        out->text[text.copy(out->text, out->textSize - 1)] = '\0';
        return resultFor(in->rc);
      },
      [&] { return in != nullptr ? messageArguments(in->handle, in->rc) : ""; });
}
