// psfile.cpp: private files in public directories, see psfile.h.
#include "common/ut/psfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <new>
#include <random>
#include <utility>

#include "common/ut/path.h"
#include "common/ut/result.h"

namespace {

constexpr int kNameTries = 100;
constexpr std::size_t kPrefixLength = 5;
constexpr std::size_t kRandomLength = 6;

std::string randomText() {
  static constexpr std::string_view kLetters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device source;
  std::uniform_int_distribution<std::size_t> letter(0, kLetters.size() - 1);
  std::string text;
  for (std::size_t i = 0; i < kRandomLength; ++i) text += kLetters[letter(source)];
  return text;
}

bool isFree(const std::string& path) {
  struct stat entry;
  return ::lstat(path.c_str(), &entry) != 0 && errno == ENOENT;
}

// A plain file of this user that has no second name elsewhere.
bool isOurs(int descriptor, struct stat* entry) {
  return ::fstat(descriptor, entry) == 0 && S_ISREG(entry->st_mode) &&
         entry->st_uid == ::geteuid() && entry->st_nlink == 1;
}

// Opens an entry that passes isOurs; a link is not followed. O_NONBLOCK so that a planted pipe
// cannot hold the program up. -1 with errno.
int openOurs(const char* path, int flags, struct stat* entry) {
  const int descriptor = ::open(path, flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    if (errno == ELOOP) errno = EEXIST;
    return -1;
  }
  if (isOurs(descriptor, entry)) return descriptor;
  ut::ignoreResult(::close(descriptor), "nothing was written");
  errno = EEXIST;
  return -1;
}

}  // namespace

void ut::FileCloser::ignoreClose(std::FILE* file) {
  ignoreResult(std::fclose(file), "only for files that were read, or given up after an error");
}

bool ut::closeFile(FilePtr file) {
  const bool written = std::ferror(file.get()) == 0;
  return std::fclose(file.release()) == 0 && written;
}

std::string ut::tempDirectory() {
  struct stat entry;
  const char* wanted = std::getenv("TMPDIR");
  if (wanted != nullptr && *wanted != '\0' && ::stat(wanted, &entry) == 0 &&
      S_ISDIR(entry.st_mode)) {
    return wanted;
  }
  return "/tmp";
}

std::string ut::tempName(std::string_view prefix) {
  try {
    const std::string start = pathIn(tempDirectory(), prefix.substr(0, kPrefixLength));
    for (int i = 0; i < kNameTries; ++i) {
      std::string path = start + randomText();
      if (isFree(path)) return path;
    }
  } catch (const std::exception&) {
    // No memory or no randomness: the caller reports that there is no name.
  }
  return {};
}

ut::FilePtr ut::openPrivateFile(const char* path) {
  // Without O_TRUNC: a file is emptied only after it has turned out to be ours.
  struct stat entry;
  const int descriptor = openOurs(path, O_RDWR | O_CREAT, &entry);
  if (descriptor < 0) return nullptr;
  std::FILE* file = nullptr;
  if (::fchmod(descriptor, 0600) == 0 && ::ftruncate(descriptor, 0) == 0) {
    file = ::fdopen(descriptor, "w+");
  }
  if (file == nullptr) ignoreResult(::close(descriptor), "nothing was written");
  return FilePtr(file);
}

ut::FilePtr ut::openOwnFile(const char* path, struct stat* entry) {
  struct stat unused;
  const int descriptor = openOurs(path, O_RDONLY, entry != nullptr ? entry : &unused);
  if (descriptor < 0) return nullptr;
  std::FILE* file = ::fdopen(descriptor, "r");
  if (file == nullptr) ignoreResult(::close(descriptor), "it was only to be read");
  return FilePtr(file);
}

int ut::openOwnForAppend(const char* path) {
  struct stat entry;
  return openOurs(path, O_RDWR | O_APPEND | O_CREAT | O_NOCTTY, &entry);
}

ut::StandardFiles ut::openStandardFiles() {
  StandardFiles result;
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (::fcntl(descriptor, F_GETFD) >= 0) continue;
    // The lowest free number is this one: those below it are open by now.
    if (::open("/dev/null", O_RDWR) != descriptor) return result;
    if (descriptor == STDOUT_FILENO) result.outputWasClosed = true;
  }
  result.ready = true;
  return result;
}

bool ut::hasRoomBeside(const std::string& path) {
  static constexpr char kBlock[8192] = {};
  try {
    const std::string probe = path + ".room";
    FilePtr file = openPrivateFile(probe.c_str());
    if (file == nullptr) return false;
    const bool taken = std::fwrite(kBlock, sizeof kBlock, 1, file.get()) == 1;
    const bool kept = closeFile(std::move(file)) && taken;
    ignoreResult(std::remove(probe.c_str()), "an empty file harms nobody");
    return kept;
  } catch (const std::bad_alloc&) {
    return false;
  }
}
