// exchange.h: the temporary files through which this program and sqlplus talk.
//
//   SQLI??????.sql     the script, one name for all catalogs; rewritten for each
//   SQLO??????_1.out   the spool file of catalog 1
//
// Both are private files in TMPDIR or /tmp.
#ifndef UTILITY_EXCHANGE_H
#define UTILITY_EXCHANGE_H

#include <ctime>
#include <string>

#include "common/ut/pssignal.h"

namespace utility {

struct ExchangeNames {
  std::string script, spoolBase;
};

// Makes the names. Returns 0, or 2531 after its message when there is none that can be used.
[[nodiscard]] unsigned short makeExchangeNames(ExchangeNames* names);

// The spool file of one query. It is made by us before sqlplus writes it, so that nobody can put a
// link there or read it, with a time of last change that no answer has. What is there after the
// query is an answer only if it is younger than the query, by the clock of the directory's own file
// system.
class SpoolFile {
 public:
  // `path` is the caller's.
  explicit SpoolFile(const char* path) : path_(path) {}

  // False when the file cannot be made.
  [[nodiscard]] bool reserve();
  // After the query: marks a file that it did not write, for isWritten.
  void judgeAge() const;

  // Whether a spool file with this time of last change was written by its query.
  static bool isWritten(const struct timespec& changed) { return changed.tv_sec != kNotWritten; }

 private:
  static constexpr std::time_t kNotWritten = 0;  // seconds

  static bool markAsNotWritten(const char* path);

  const char* path_;
  struct timespec reserved_ = {};
};

// Until the end of the scope a signal that ends the program (SIGINT, SIGQUIT, SIGTERM, SIGHUP)
// first removes both files: the script holds a password. To be made before the script's first byte
// is written. The paths are the caller's. Guards can be nested; the innermost one counts.
class ExchangeGuard {
 public:
  ExchangeGuard(const char* scriptPath, const char* spoolPath);
  ~ExchangeGuard();
  ExchangeGuard(const ExchangeGuard&) = delete;
  ExchangeGuard& operator=(const ExchangeGuard&) = delete;

 private:
  const char* before_[2];
  ut::SignalWatch interrupt_, quit_, terminate_, hangUp_;
};

// Removes one of these files, unless the trace flag ORCLEVEL2 wants it for diagnosis.
void removeUnlessTraced(const char* path);

}  // namespace utility

#endif  // UTILITY_EXCHANGE_H
