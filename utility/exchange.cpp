// exchange.cpp: the temporary files of a query, see exchange.h.
#include "utility/exchange.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <utility>

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"

namespace {

// Trace lines carry the function that the step belongs to.
constexpr char kSync[] = "utSyncZylToRman()";
constexpr char kQuery[] = "utQueryCatalog()";

// The names become part of a shell command and of the SQL script: a blank, a quote or a "$" in
// TMPDIR would turn them into something else, so such a name is not used.
std::string tempNameFor(const char* prefix) {
  std::string name = ut::tempName(prefix);
  const bool plain = std::all_of(name.begin(), name.end(), [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("/._-+", c) != nullptr;
  });
  return plain ? name : std::string();
}

// Read by the signal handler.
const char* volatile filesAtRisk[2] = {nullptr, nullptr};

void removeAndEnd(int sig) {
  for (const char* const volatile& path : filesAtRisk) {
    const char* const file = path;
    if (file != nullptr) ut::ignoreResult(::unlink(file), "the program ends in any case");
  }
  ::signal(sig, SIG_DFL);
  ::raise(sig);  // takes effect when this handler returns
}

}  // namespace

unsigned short utility::makeExchangeNames(ExchangeNames* names) {
  names->script = tempNameFor("SQLI");
  if (names->script.empty()) {
    nlprintf(msg::kNoTempName);
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: tempnam() failed for SQLI\n", kSync);
  }
  names->spoolBase = tempNameFor("SQLO");
  if (names->spoolBase.empty()) {
    nlprintf(msg::kNoTempName);
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: tempnam() failed for SQLO\n", kSync);
  }
  if (names->script.empty() || names->spoolBase.empty()) {
    TRACE(TR_ORCLEVEL0, " %s: Exit could not create file name with tempnam()\n\n", kSync);
    return msg::kNoTempName.code();
  }
  names->script += ".sql";
  return 0;
}

bool utility::SpoolFile::markAsNotWritten(const char* path) {
  const struct timespec times[2] = {{kNotWritten, 0}, {kNotWritten, 0}};
  return ::utimensat(AT_FDCWD, path, times, AT_SYMLINK_NOFOLLOW) == 0;
}

bool utility::SpoolFile::reserve() {
  ut::FilePtr file = ut::openPrivateFile(path_);
  struct stat entry;
  if (file == nullptr || ::fstat(::fileno(file.get()), &entry) != 0) return false;
  reserved_ = entry.st_ctim;
  return ut::closeFile(std::move(file)) && markAsNotWritten(path_);
}

void utility::SpoolFile::judgeAge() const {
  struct stat entry;
  if (::lstat(path_, &entry) != 0) return;  // whoever reads it reports that
  const struct timespec& changed = entry.st_mtim;
  const bool younger = changed.tv_sec != reserved_.tv_sec ? changed.tv_sec > reserved_.tv_sec
                                                          : changed.tv_nsec >= reserved_.tv_nsec;
  if (younger) return;
  TRACE(TR_ORCLEVEL0, " %s: '%s' is older than the query\n", kQuery, path_);
  ut::ignoreResult(markAsNotWritten(path_), "a file that is not ours is refused anyway");
}

utility::ExchangeGuard::ExchangeGuard(const char* scriptPath, const char* spoolPath)
    : before_{filesAtRisk[0], filesAtRisk[1]},
      interrupt_(SIGINT, removeAndEnd),
      quit_(SIGQUIT, removeAndEnd),
      terminate_(SIGTERM, removeAndEnd),
      hangUp_(SIGHUP, removeAndEnd) {
  filesAtRisk[0] = TR_ORCLEVEL2 ? nullptr : scriptPath;  // under that flag they are kept
  filesAtRisk[1] = TR_ORCLEVEL2 ? nullptr : spoolPath;
}

utility::ExchangeGuard::~ExchangeGuard() {
  filesAtRisk[0] = before_[0];
  filesAtRisk[1] = before_[1];
}

void utility::removeUnlessTraced(const char* path) {
  if (!TR_ORCLEVEL2) ut::ignoreResult(std::remove(path), "a file left in /tmp harms nobody");
}
