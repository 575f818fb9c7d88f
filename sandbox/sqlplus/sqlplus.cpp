// sqlplus.cpp: the sandbox's sqlplus: its command line, the logon, the profiles.
//
// Does what a program that runs a script through the real tool can notice: one logon with the
// script's first line, the profiles, the script's commands, then those of standard input until it
// ends. What the profiles set applies to the script, unless the script sets it again:
//
//   $ORACLE_HOME/sqlplus/admin/glogin.sql   the site's profile
//   login.sql                               the user's: the first one in the directories of
//                                           ORACLE_PATH and then of SQLPATH, with ":" between them
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/sqlplus/oracle_date.h"
#include "sandbox/sqlplus/session.h"
#include "sandbox/store/site.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr int kFailure = 1;

struct CommandLine {
  bool silent = false;
  bool wantsVersion = false;
  std::string script;
};

struct Logon {
  std::string user, password, connect;
};

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// Nothing for a command line that is not understood.
std::optional<CommandLine> parseCommandLine(int argc, char** argv) {
  CommandLine result;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (equalIgnoringCase(word, "-S")) {
      result.silent = true;
    } else if (equalIgnoringCase(word, "-V")) {
      result.wantsVersion = true;
    } else if (word.starts_with('@') && word.size() > 1 && result.script.empty()) {
      result.script = word.substr(1);
    } else if (!equalIgnoringCase(word, "-L")) {
      return std::nullopt;
    }
  }
  if (result.script.empty() && !result.wantsVersion) return std::nullopt;
  return result;
}

// Takes a part of the logon up to `end`, which is taken as well. In double quotes a part may hold
// any character.
std::string takePart(std::string_view& line, char end) {
  std::string part;
  bool isQuoted = false;
  while (!line.empty() && (isQuoted || line.front() != end)) {
    if (line.front() == '"') {
      isQuoted = !isQuoted;
    } else {
      part += line.front();
    }
    line.remove_prefix(1);
  }
  if (!line.empty()) line.remove_prefix(1);
  return part;
}

// user/password@connect_identifier
Logon parseLogon(std::string_view line) {
  line = trimmed(line);
  Logon logon;
  logon.user = takePart(line, '/');
  logon.password = takePart(line, '@');
  logon.connect = line;
  return logon;
}

// Opens the catalog, or prints why not in the tool's words.
std::optional<OracleCatalog> logOn(const Logon& logon, const Language& language) {
  const std::string_view name = logon.connect.empty() ? kDefaultCatalog : logon.connect;
  const char* error = "ORA-12154: TNS:could not resolve the connect identifier specified";
  try {
    if (const std::string path = catalogPath(name); std::filesystem::exists(path)) {
      OracleCatalog catalog(path);
      if (catalog.accepts(logon.user, logon.password)) return catalog;
      error = logon.password.empty() ? "ORA-01005: null password given; logon denied"
                                     : "ORA-01017: invalid username/password; logon denied";
    }
  } catch (const StoreError&) {
    error = "ORA-01034: ORACLE not available";
  }
  std::printf("%s\n%s\n\n\n", language.sentence(language.texts().error).c_str(), error);
  return std::nullopt;
}

std::string userProfile() {
  const std::string directories = environment("ORACLE_PATH") + ":" + environment("SQLPATH");
  for (std::string_view directory : split(directories, ':')) {
    std::string path = std::string(directory) + "/login.sql";
    if (!directory.empty() && std::filesystem::exists(path)) return path;
  }
  return {};
}

int refuse(const std::string& text) {
  std::printf("%s\n", text.c_str());
  return kFailure;
}

// Takes the lines of the profiles, the script, and then standard input, until one ends the session.
int play(std::istream& script, SqlSession& session) {
  std::ifstream site(environment("ORACLE_HOME") + "/sqlplus/admin/glogin.sql"), user(userProfile());
  bool open = session.takeAll(site) && session.takeAll(user) && session.takeAll(script);
  if (open) session.becomeInteractive();
  std::string line;
  while (open) {
    std::printf("SQL> ");
    std::fflush(stdout);
    open = std::getline(std::cin, line) && session.take(line);
  }
  session.finish();
  return session.exitStatus();
}

int run(const CommandLine& commandLine) {
  const Language language(environment("NLS_LANG"));
  std::ifstream script(commandLine.script);
  if (!script) return refuse("SP2-0310: unable to open file \"" + commandLine.script + "\"");
  std::string firstLine;
  std::getline(script, firstLine);
  std::optional<OracleCatalog> catalog = logOn(parseLogon(firstLine), language);
  if (!catalog) return refuse("SP2-0751: Unable to connect to Oracle.  Exiting SQL*Plus");
  if (!commandLine.silent) std::printf("\nConnected.\n\n");
  SqlSession session(std::move(*catalog), language);
  const int status = play(script, session);
  if (!commandLine.silent) std::printf("Disconnected from the sandbox catalog\n");
  return status;
}

}  // namespace
}  // namespace sandbox

int main(int argc, char** argv) {
  const auto commandLine = sandbox::parseCommandLine(argc, argv);
  if (!commandLine) {
    return sandbox::refuse("SP2-0306: Invalid option.\nUsage: sqlplus [-L] [-S] @SCRIPT | -V");
  }
  if (!commandLine->silent) std::printf("\nSQL*Plus: sandbox edition\n");
  if (commandLine->wantsVersion) return 0;
  try {
    return sandbox::run(*commandLine);
  } catch (const sandbox::OracleError& error) {
    return sandbox::refuse(error.text);
  } catch (const std::exception& error) {
    return sandbox::refuse(std::string("SP2-0642: ") + error.what());
  }
}
