// options.cpp: the client options of the storage client library.
#include "sandbox/library/options.h"

#include <fstream>

#include "sandbox/store/site.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

struct TextKeyword {
  std::string_view name;
  std::string ClientOptions::*text;
  std::size_t limit;
};

constexpr TextKeyword kTexts[] = {
    {"STORE", &ClientOptions::storePath, VLT_MAX_PATH},
    {"NODE", &ClientOptions::nodeName, VLT_MAX_NODE},
    {"PASSWORDDIR", &ClientOptions::passwordDirectory, VLT_MAX_PATH},
    {"SERVER", &ClientOptions::serverName, VLT_MAX_SERVER},
    {"ADDRESS", &ClientOptions::serverAddress, VLT_MAX_SERVER},
};

struct ChoiceKeyword {
  std::string_view name;
  bool ClientOptions::*choice;
  std::string_view no, yes;
};

constexpr ChoiceKeyword kChoices[] = {
    {"PASSWORDACCESS", &ClientOptions::generatedPassword, "prompt", "generate"},
    {"COMPRESSION", &ClientOptions::compression, "no", "yes"},
};

std::string_view unquoted(std::string_view value) {
  if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
    return value.substr(1, value.size() - 2);
  }
  return value;
}

void apply(std::string_view keyword, std::string_view value, ClientOptions& options) {
  value = unquoted(value);
  for (const TextKeyword& known : kTexts) {
    if (!equalIgnoringCase(keyword, known.name)) continue;
    require(!value.empty() && value.size() <= known.limit, VLT_RC_BAD_OPTION);
    options.*known.text = value;
    return;
  }
  for (const ChoiceKeyword& known : kChoices) {
    if (!equalIgnoringCase(keyword, known.name)) continue;
    options.*known.choice = equalIgnoringCase(value, known.yes);
    require(options.*known.choice || equalIgnoringCase(value, known.no), VLT_RC_BAD_OPTION);
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
  // A directory can be opened, but not read.
  require(file.eof(), VLT_RC_BAD_OPTION);
  return options;
}

void applyOptionText(std::string_view text, ClientOptions& options) {
  static constexpr std::string_view kDirectory = "-PASSWORDDIR=", kAccess = "-PASSWORDACCESS=";
  const auto begins = [&](std::string_view word) {
    return equalIgnoringCase(text.substr(0, word.size()), word);
  };
  for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
    require(begins(kDirectory) || begins(kAccess), VLT_RC_BAD_OPTION);
    // The directory may hold blanks, so it takes the rest of the text.
    const std::string_view word = begins(kDirectory) ? text : text.substr(0, text.find(' '));
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
