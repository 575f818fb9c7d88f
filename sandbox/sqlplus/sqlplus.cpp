// sqlplus.cpp: the sandbox's sqlplus: its command line and the logon.
//
// Does what a program that runs a script through the real tool can notice: one logon with the
// script's first line, the script's commands, then those of standard input until it ends.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>

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

// The user ends at the first "/", so that the password may hold one; the connect identifier begins
// after the last "@", so that the password may hold that as well.
std::optional<Logon> parseLogon(std::string_view line) {
  line = trimmed(line);
  const std::size_t slash = line.find('/');
  if (slash == std::string_view::npos) return std::nullopt;
  Logon logon;
  logon.user = line.substr(0, slash);
  line.remove_prefix(slash + 1);
  const std::size_t sign = line.rfind('@');
  logon.password = line.substr(0, sign);
  if (sign != std::string_view::npos) logon.connect = line.substr(sign + 1);
  return logon;
}

// Opens the catalog, or prints why not in the tool's words.
std::optional<OracleCatalog> logOn(const Logon& logon) {
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
  std::printf("ERROR:\n%s\n\n\n", error);
  return std::nullopt;
}

int refuse(const char* text) {
  std::printf("%s\n", text);
  return kFailure;
}

// Takes the lines of the script, and then those of standard input, until one ends the session.
int play(std::istream& script, SqlSession& session) {
  bool open = true;
  std::string line;
  while (open && std::getline(script, line)) open = session.take(line);
  if (open) session.becomeInteractive();
  while (open) {
    std::printf("SQL> ");
    std::fflush(stdout);
    open = std::getline(std::cin, line) && session.take(line);
  }
  session.finish();
  return session.exitStatus();
}

int run(const CommandLine& commandLine) {
  std::ifstream script(commandLine.script);
  if (!script) {
    return refuse(("SP2-0310: unable to open file \"" + commandLine.script + "\"").c_str());
  }
  std::string firstLine;
  std::getline(script, firstLine);
  const std::optional<Logon> logon = parseLogon(firstLine);
  if (!logon) {
    return refuse(
        "SP2-0306: Invalid option.\nUsage: the script's first line is "
        "user/password@connect_identifier");
  }
  std::optional<OracleCatalog> catalog = logOn(*logon);
  if (!catalog) return refuse("SP2-0751: Unable to connect to Oracle.  Exiting SQL*Plus");
  if (!commandLine.silent) std::printf("\nConnected.\n\n");
  SqlSession session(std::move(*catalog));
  const int status = play(script, session);
  if (!commandLine.silent) std::printf("Disconnected from the sandbox catalog\n");
  return status;
}

}  // namespace
}  // namespace sandbox

int main(int argc, char** argv) {
  const auto commandLine = sandbox::parseCommandLine(argc, argv);
  if (!commandLine) {
    std::printf("SP2-0306: Invalid option.\nUsage: sqlplus [-L] [-S] @SCRIPT | -V\n");
    return sandbox::kFailure;
  }
  if (!commandLine->silent) std::printf("\nSQL*Plus: sandbox edition\n");
  if (commandLine->wantsVersion) return 0;
  try {
    return sandbox::run(*commandLine);
  } catch (const std::exception& error) {
    std::printf("SP2-0642: %s\n", error.what());
    return sandbox::kFailure;
  }
}
