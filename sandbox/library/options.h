// options.h: the client options of the storage client library.
//
// The options file has one `KEYWORD value` a line; keywords are case-insensitive; a line that
// begins with "*" is a comment, as is an empty one. A value may be in double quotes.
//
//   STORE path             the store; default $SANDBOX_HOME/store.db
//   NODE name              the node to log on as; default the host's name
//   PASSWORDACCESS prompt|generate
//   PASSWORDDIR directory  of the generated passwords
//   COMPRESSION yes|no
//   SERVER name, ADDRESS address   for display
#ifndef SANDBOX_LIBRARY_OPTIONS_H
#define SANDBOX_LIBRARY_OPTIONS_H

#include <string>
#include <string_view>

#include "sandbox/library/checks.h"

namespace sandbox {

struct ClientOptions {
  std::string file;  // empty: the defaults, no file was read
  std::string storePath;
  std::string nodeName;
  std::string passwordDirectory;  // empty: the default for the store
  std::string serverName = "SANDBOX";
  std::string serverAddress = "localhost";
  bool generatedPassword = false;
  bool compression = false;
};

// Without a file (empty path) the defaults. Throws Refusal with VLT_RC_BAD_OPTION for a file that
// cannot be read and for a line that is not understood.
ClientOptions readClientOptions(const std::string& path);

// Overrides options with the words of an option text, see VltInitExIn::options. Throws Refusal
// with VLT_RC_BAD_OPTION for a word that is not understood.
void applyOptionText(std::string_view text, ClientOptions& options);

// The directory of the node's password file.
std::string passwordDirectoryOf(const ClientOptions& options);

void fillOptions(const ClientOptions& options, VltOptions& out);

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_OPTIONS_H
