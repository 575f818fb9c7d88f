// querywatch.cpp: how far a catalog query is, see querywatch.h.
#include "utility/unx/querywatch.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <exception>

#include "common/nls/nls.h"
#include "common/ut/result.h"
#include "utility/exchange.h"

namespace {

constexpr auto kInterval = std::chrono::milliseconds(100);

// No signal handler runs in a thread that is started in its scope.
class NoSignals {
 public:
  NoSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ut::ignoreResult(::pthread_sigmask(SIG_SETMASK, &all, &before_), "a full set is valid");
  }
  ~NoSignals() {
    ut::ignoreResult(::pthread_sigmask(SIG_SETMASK, &before_, nullptr), "it was valid before");
  }
  NoSignals(const NoSignals&) = delete;
  NoSignals& operator=(const NoSignals&) = delete;

 private:
  sigset_t before_ = {};
};

}  // namespace

utility::QueryWatch::QueryWatch(const std::string& catalogName, const char* spoolPath)
    : spoolPath_(spoolPath),
      progress_(
          [catalogName](const char* count, const char* rate) {
            return nlsprintf(msg::kProgressQuery, catalogName, count, rate);
          },
          ut::Progress::Place::kBelow) {
  const NoSignals none;
  thread_ = std::thread([this] { watch(); });
}

utility::QueryWatch::~QueryWatch() {
  {
    const std::lock_guard lock(mutex_);
    ended_ = true;
  }
  wakeUp_.notify_one();
  thread_.join();  // before the line is erased
}

std::unique_ptr<utility::QueryWatch> utility::QueryWatch::begin(const std::string& catalogName,
                                                                const char* spoolPath) {
  if (!ut::Progress::wouldShow()) return nullptr;
  try {
    return std::unique_ptr<QueryWatch>(new QueryWatch(catalogName, spoolPath));
  } catch (const std::exception&) {
    return nullptr;
  }
}

void utility::QueryWatch::watch() {
  std::unique_lock lock(mutex_);
  while (!wakeUp_.wait_for(lock, kInterval, [this] { return ended_; })) {
    if (countLines()) progress_.reach(lines_);
  }
}

bool utility::QueryWatch::countLines() {
  const int file = ::open(spoolPath_, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  struct stat entry;
  const bool written = ::fstat(file, &entry) == 0 && S_ISREG(entry.st_mode) && entry.st_size > 0 &&
                       SpoolFile::isWritten(entry.st_mtim);
  char piece[16384];
  ssize_t got = 0;
  while (written && (got = ::pread(file, piece, sizeof piece, position_)) > 0) {
    lines_ += static_cast<std::uint64_t>(std::count(piece, piece + got, '\n'));
    position_ += got;
  }
  ut::ignoreResult(::close(file), "it was only read");
  return written;
}
