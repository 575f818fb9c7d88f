// password.cpp: the agent's own password file, see password.h.
#include "agent/password.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "agent/errormsg.h"
#include "agent/psutil2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/path.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"

namespace {

constexpr short kNotReadable = msg::kPasswordFileNotRead.code();
constexpr short kDirectoryNotOpened = msg::kPasswordDirectoryNotOpened.code();
constexpr short kDirectoryNotCreated = msg::kPasswordDirectoryNotCreated.code();
constexpr short kNotWritten = -1;
constexpr mode_t kFileMode = 0644;
constexpr char kHeader[] = "Agent for Oracle Backup - Password file";
constexpr std::size_t kHeaderLength = sizeof kHeader - 1;
static_assert(kHeaderLength == 39);
constexpr std::size_t kBlock = 8;

// Appends the bytes of a deciphered block that count: its chunk's digit says how many. A byte other
// than "1" to "8" is read as a number all the same, within what block and password can hold.
void appendChunk(int digit, const std::uint8_t* block, char* password, std::size_t* length) {
  const int wanted = digit - '0';
  std::size_t count = wanted < 0 ? 0 : static_cast<std::size_t>(wanted);
  if (count > kBlock) count = kBlock;
  if (count > kPasswordSize - 1 - *length) count = kPasswordSize - 1 - *length;
  std::memcpy(password + *length, block, count);
  *length += count;
}

void renameToSave(const char* path) {
  char saved[agent::kPasswordPathSize];
  const int wanted = std::snprintf(saved, sizeof saved, "%s.save", path);
  if (wanted >= static_cast<int>(sizeof saved)) {
    errno = ENAMETOOLONG;
  } else if (std::rename(path, saved) == 0) {
    vexoErrorMsg(nlsprintf(msg::kPasswordFileRenamed, path, saved).c_str(), 0);
    return;
  }
  const char* reason = std::strerror(errno);
  agent::showAndLog(nlsprintf(msg::kPasswordFileNotRenamed, path, reason));
}

// Makes sure that the directory exists. Returns 0, 2521 or 167.
short openDirectory(const char* dir) {
  char name[agent::kPasswordPathSize];
  ut::ignoreResult(ut::copyText(name, dir), "directories are shorter");
  ut::dropTrailingSlashes(name);
  if (DIR* opened = ::opendir(name)) {
    ut::ignoreResult(::closedir(opened), "it was only looked at");
    return 0;
  }
  if (errno != ENOENT) return kDirectoryNotOpened;
  return ::mkdir(name, 0700) == 0 ? 0 : kDirectoryNotCreated;
}

// Writes header and chunks. False if something did not reach the file. A password of a multiple of
// 8 bytes ends with a full chunk; there is no empty one after it.
bool writeChunks(std::FILE* file, const char* password, const unsigned int* key) {
  bool good = std::fputs(kHeader, file) >= 0;
  std::size_t count = kBlock;
  for (std::size_t rest = std::strlen(password); good && count == kBlock; password += count) {
    count = std::min(rest, kBlock);
    if (count == 0) break;
    rest -= count;
    std::uint8_t block[kBlock] = {};
    std::memcpy(block, password, count);
    gVltApiObjP->dvltEncryptEx(VltApiStatusObjP, key, block, block);
    good = std::fputc('0' + static_cast<int>(count), file) != EOF &&
           std::fwrite(block, 1, kBlock, file) == kBlock;
    ut::wipe(block, sizeof block);
  }
  return good;
}

// Opens a password file to read it. What is checked, changed and read is the one descriptor; a pipe
// in the file's place does not hold the program up. Another user's file keeps its mode: only
// whether it can be opened counts.
ut::FilePtr openToRead(const char* path) {
  const int descriptor = ::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  struct stat entry;
  if (::fstat(descriptor, &entry) != 0 || !S_ISREG(entry.st_mode)) {
    ut::ignoreResult(::close(descriptor), "nothing was read");
    return nullptr;
  }
  ut::ignoreResult(::fchmod(descriptor, kFileMode), "it is open for us");
  std::FILE* file = ::fdopen(descriptor, "r");
  if (file == nullptr) ut::ignoreResult(::close(descriptor), "nothing was read");
  return ut::FilePtr(file);
}

// Replaces `path` (room for kPasswordPathSize bytes) by the file that a link there stands for. A
// link that another user planted is not followed: it would be replaced, and what it names kept.
void followLink(char* path) {
  struct stat link, file;
  if (::lstat(path, &link) != 0 || !S_ISLNK(link.st_mode)) return;
  if (::stat(path, &file) != 0 || !S_ISREG(file.st_mode)) return;
  const bool trusted = link.st_uid == 0 || link.st_uid == ::geteuid() || link.st_uid == file.st_uid;
  if (!trusted) return;
  char* real = ::realpath(path, nullptr);
  if (real == nullptr) return;
  if (std::strlen(real) < agent::kPasswordPathSize) {
    ut::ignoreResult(ut::copyText(path, agent::kPasswordPathSize, real), "it fits");
  }
  std::free(real);
}

// The new file is made by whoever changes the password, often root; the old one's owner must still
// be able to replace it.
void keepOwner(const char* oldPath, int descriptor) {
  struct stat old;
  if (::lstat(oldPath, &old) != 0 || !S_ISREG(old.st_mode)) return;
  ut::ignoreResult(::fchown(descriptor, old.st_uid, old.st_gid), "every user can read it");
}

}  // namespace

void psvexoGetFileName(char* dir, char* path, orcObj_t* orc) {
  const char* found = *orc->VEXO_PSWDPATH != '\0' ? orc->VEXO_PSWDPATH : orc->VLTI_ORC_DIR;
  if (*found != '\0') {
    ut::ignoreResult(ut::copyText(dir, agent::kPasswordPathSize, found), "options are shorter");
  } else if (psvexoGetVexoDir(dir, agent::kPasswordPathSize) != 0) {
    *dir = '\0';
  }
  std::snprintf(path, agent::kPasswordPathSize, "%s%sVEXO.%s", dir, ut::slashAfter(dir),
                orc->VEXO_NODE);
}

void psvexoSetKey(unsigned int* key, orcObj_t* orc) {
  gVltApiObjP->dvltCreateDesKeyEx(VltApiStatusObjP, orc->VEXO_NODE, key);
}

short psvexoReadPswdFromFile(const char* path, char* password, unsigned int* key) {
  *password = '\0';
  const ut::FilePtr file = openToRead(path);
  if (file == nullptr) return kNotReadable;
  // Unbuffered: stdio would keep the password in its buffer, and free that unwiped.
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  char header[kHeaderLength];
  ut::ignoreResult(std::fread(header, 1, sizeof header, file.get()), "not checked");
  std::size_t length = 0;
  std::uint8_t block[kBlock];
  for (int digit = std::getc(file.get()); digit != EOF; digit = std::getc(file.get())) {
    if (std::fread(block, 1, kBlock, file.get()) != kBlock) break;
    gVltApiObjP->dvltDecryptEx(VltApiStatusObjP, key, block, block);
    appendChunk(digit, block, password, &length);
  }
  password[length] = '\0';
  ut::wipe(block, sizeof block);
  return 0;
}

namespace {

// Where the node's password is and how it is enciphered. The key is wiped with the object.
struct NodeFile {
  char dir[agent::kPasswordPathSize];
  char path[agent::kPasswordPathSize];
  unsigned int key[2] = {0, 0};

  explicit NodeFile(orcObj_t* orc) {
    psvexoGetFileName(dir, path, orc);
    psvexoSetKey(key, orc);
  }
  ~NodeFile() { ut::wipe(key, sizeof key); }
};

}  // namespace

short psvexoReadPswd(char* password, orcObj_t* orc, int renameAfterRead) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "psvexoReadPswd()");
  NodeFile file(orc);
  const short rc = psvexoReadPswdFromFile(file.path, password, file.key);
  if (rc == 0 && renameAfterRead != 0) renameToSave(file.path);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "psvexoReadPswd()", rc);
  return rc;
}

short psvexoWritePswdToFile(const char* dir, const char* path, const char* password,
                            unsigned int* key) {
  if (const short rc = openDirectory(dir); rc != 0) return rc;
  // Written beside the old file and then renamed over it: a full disk must not cost the old
  // password.
  char real[agent::kPasswordPathSize];
  char made[agent::kPasswordPathSize];
  if (!ut::copyText(real, path)) return kNotWritten;
  followLink(real);
  if (std::snprintf(made, sizeof made, "%s.XXXXXX", real) >= static_cast<int>(sizeof made)) {
    return kNotWritten;
  }
  const int descriptor = ::mkstemp(made);
  if (descriptor < 0) return kNotWritten;
  ut::FilePtr file(::fdopen(descriptor, "w"));
  if (file == nullptr) ut::ignoreResult(::close(descriptor), "nothing was written");
  if (file != nullptr) keepOwner(real, descriptor);
  const bool written = file != nullptr && ::fchmod(descriptor, kFileMode) == 0 &&
                       writeChunks(file.get(), password, key) && ut::closeFile(std::move(file)) &&
                       std::rename(made, real) == 0;
  if (written) return 0;
  ut::ignoreResult(std::remove(made), "the old file is untouched");
  return kNotWritten;
}

short psvexoUpdatePswd(const char* password, orcObj_t* orc) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "psvexoUpdatePswd()");
  NodeFile file(orc);
  const short rc = psvexoWritePswdToFile(file.dir, file.path, password, file.key);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "psvexoUpdatePswd()", rc);
  return rc;
}
