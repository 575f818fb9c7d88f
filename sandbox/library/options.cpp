// options.cpp: the client options of the storage client library.
#include "sandbox/library/options.h"

#include <fstream>

#include "sandbox/store/site.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

std::string limited(std::string_view value, std::size_t limit) {
  require(!value.empty() && value.size() <= limit, VLT_RC_BAD_OPTION);
  return std::string(value);
}

// Which of two words a value is.
bool isSecond(std::string_view value, std::string_view first, std::string_view second) {
  const bool matchesSecond = equalIgnoringCase(value, second);
  require(matchesSecond || equalIgnoringCase(value, first), VLT_RC_BAD_OPTION);
  return matchesSecond;
}

struct Keyword {
  std::string_view name;
  void (*apply)(std::string_view value, ClientOptions& options);
};

constexpr Keyword kKeywords[] = {
    {"STORE", [](std::string_view v, ClientOptions& o) { o.storePath = limited(v, VLT_MAX_PATH); }},
    {"NODENAME",
     [](std::string_view v, ClientOptions& o) { o.nodeName = limited(v, VLT_MAX_NODE); }},
    {"PASSWORDACCESS",
     [](std::string_view v, ClientOptions& o) {
       o.generatedPassword = isSecond(v, "prompt", "generate");
     }},
    {"PASSWORDDIR",
     [](std::string_view v, ClientOptions& o) { o.passwordDirectory = limited(v, VLT_MAX_PATH); }},
    {"COMPRESSION",
     [](std::string_view v, ClientOptions& o) { o.compression = isSecond(v, "no", "yes"); }},
    {"SERVERNAME",
     [](std::string_view v, ClientOptions& o) { o.serverName = limited(v, VLT_MAX_SERVER); }},
    {"SERVERADDRESS",
     [](std::string_view v, ClientOptions& o) { o.serverAddress = limited(v, VLT_MAX_SERVER); }},
};

std::string_view unquoted(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
    return value.substr(1, value.size() - 2);
  return value;
}

void apply(std::string_view keyword, std::string_view value, ClientOptions& options) {
  for (const Keyword& known : kKeywords) {
    if (!equalIgnoringCase(keyword, known.name)) continue;
    known.apply(unquoted(value), options);
    return;
  }
  throw Refusal{VLT_RC_BAD_OPTION};
}

void applyLine(std::string_view line, ClientOptions& options) {
  line = trimmed(line);
  if (line.empty() || line.front() == '*') return;
  const std::size_t end = line.find_first_of(" \t");
  require(end != std::string_view::npos, VLT_RC_BAD_OPTION);
  apply(line.substr(0, end), trimmed(line.substr(end)), options);
}

}  // namespace

ClientOptions readClientOptions(const std::string& path) {
  ClientOptions options;
  options.storePath = defaultStorePath();
  if (path.empty()) return options;
  options.file = path;
  std::ifstream file(path);
  std::string line;
  while (std::getline(file, line)) applyLine(line, options);
  // Reading to the end is the only good end: a directory opens, but cannot be read.
  require(file.eof(), VLT_RC_BAD_OPTION);
  return options;
}

void applyOptionText(std::string_view text, ClientOptions& options) {
  static constexpr std::string_view kDirectory = "-PASSWORDDIR=", kAccess = "-PASSWORDACCESS=";
  for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
    // The directory may hold blanks, so it takes the rest of the text.
    const bool isDirectory = equalIgnoringCase(text.substr(0, kDirectory.size()), kDirectory);
    const bool isAccess = equalIgnoringCase(text.substr(0, kAccess.size()), kAccess);
    require(isDirectory || isAccess, VLT_RC_BAD_OPTION);
    const std::string_view word = isDirectory ? text : text.substr(0, text.find(' '));
    const std::size_t equals = word.find('=');
    apply(word.substr(1, equals - 1), word.substr(equals + 1), options);
    text.remove_prefix(word.size());
  }
}

std::string passwordDirectoryOf(const ClientOptions& options) {
  return options.passwordDirectory.empty() ? defaultPasswordDirectory(options.storePath)
                                           : options.passwordDirectory;
}

void fillOptions(const ClientOptions& options, VltOptions& out) {
  fillText(out.configFile, options.file);
  fillText(out.serverName, options.serverName);
  fillText(out.serverAddress, options.serverAddress);
  fillText(out.nodeName, upperCase(options.nodeName));
  out.compression = options.compression ? 1 : 0;
  out.passwordAccess = options.generatedPassword ? VLT_PASSWORD_GENERATE : VLT_PASSWORD_PROMPT;
}

}  // namespace sandbox
