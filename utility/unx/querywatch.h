// querywatch.h: shows on the terminal how far a catalog query is, while sqlplus runs.
//
// The program itself waits for sqlplus, so the watch has a thread of its own that looks at the
// spool file ten times a second and counts the new lines. It shows nothing before the first byte:
// until then sqlplus may still report on its logon.
#ifndef UTILITY_UNX_QUERYWATCH_H
#define UTILITY_UNX_QUERYWATCH_H

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "common/ut/progress.h"

namespace utility {

class QueryWatch {
 public:
  // Begins. Until the watch ends the caller must only wait for sqlplus; `spoolPath` is the
  // caller's. Null when nobody can see it, or without memory or a thread: the query then runs
  // unseen.
  static std::unique_ptr<QueryWatch> begin(const std::string& catalogName, const char* spoolPath);
  // Ends it and erases the line.
  ~QueryWatch();
  QueryWatch(const QueryWatch&) = delete;
  QueryWatch& operator=(const QueryWatch&) = delete;

 private:
  QueryWatch(const std::string& catalogName, const char* spoolPath);

  void watch();
  // Counts the lines since the last call. False while nothing was written.
  bool countLines();

  const char* spoolPath_;
  ut::Progress progress_;
  std::uint64_t lines_ = 0;
  off_t position_ = 0;
  std::mutex mutex_;
  std::condition_variable wakeUp_;
  bool ended_ = false;  // under the mutex
  std::thread thread_;
};

}  // namespace utility

#endif  // UTILITY_UNX_QUERYWATCH_H
