// password.cpp: the agent's own password file, see password.h.
#include "agent/password.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "agent/errormsg.h"
#include "agent/psutil2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/psfile.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"

namespace {

constexpr short kNotReadable = 168;
constexpr std::size_t kHeaderLength = 39;
constexpr std::size_t kBlock = 8;

// Appends what a chunk's digit promises of its deciphered block. Digits other than "1" to "8" are
// taken as they are, within what the block and the password can hold.
void appendChunk(int digit, const uint8_t* block, char* password, std::size_t* length) {
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
    return;
  }
  const char* reason = std::strerror(errno);
  const std::string text = nlsprintf(2629, path, reason);
  vexoErrorMsg(text.c_str(), 0);
  nlprintf(2, text);
}

}  // namespace

void psvexoGetFileName(char* dir, char* path, orcObj_t* orc) {
  const char* found = *orc->VEXO_PSWDPATH != '\0' ? orc->VEXO_PSWDPATH : orc->VLTI_ORC_DIR;
  if (*found != '\0') {
    ut::ignoreResult(ut::copyText(dir, agent::kPasswordPathSize, found), "options are shorter");
  } else if (psvexoGetVexoDir(dir, agent::kPasswordPathSize) != 0) {
    *dir = '\0';
  }
  const std::size_t length = std::strlen(dir);
  const char* slash = length > 0 && dir[length - 1] == '/' ? "" : "/";
  std::snprintf(path, agent::kPasswordPathSize, "%s%sVEXO.%s", dir, slash, orc->VEXO_NODE);
}

void psvexoSetKey(unsigned int* key, orcObj_t* orc) {
  gVltApiObjP->dvltCreateDesKeyEx(VltApiStatusObjP, orc->VEXO_NODE, key);
}

short psvexoReadPswdFromFile(const char* path, char* password, unsigned int* key) {
  *password = '\0';
  struct stat entry;
  if (::stat(path, &entry) != 0 || !S_ISREG(entry.st_mode) || ::chmod(path, 0644) != 0) {
    return kNotReadable;
  }
  const ut::FilePtr file(std::fopen(path, "r"));
  if (file == nullptr) return kNotReadable;
  char header[kHeaderLength];
  ut::ignoreResult(std::fread(header, 1, sizeof header, file.get()), "not checked");
  std::size_t length = 0;
  uint8_t block[kBlock];
  for (int digit = std::getc(file.get()); digit != EOF; digit = std::getc(file.get())) {
    if (std::fread(block, 1, kBlock, file.get()) != kBlock) break;
    gVltApiObjP->dvltDecryptEx(VltApiStatusObjP, key, block, block);
    appendChunk(digit, block, password, &length);
  }
  password[length] = '\0';
  ut::wipe(block, sizeof block);
  return 0;
}

short psvexoReadPswd(char* password, orcObj_t* orc, int renameAfterRead) {
  TRACE(TR_ORCLEVEL1, " %s: Enter\n", "psvexoReadPswd()");
  char dir[agent::kPasswordPathSize];
  char path[agent::kPasswordPathSize];
  psvexoGetFileName(dir, path, orc);
  unsigned int key[2] = {0, 0};
  psvexoSetKey(key, orc);
  const short rc = psvexoReadPswdFromFile(path, password, key);
  ut::wipe(key, sizeof key);
  if (rc == 0 && renameAfterRead != 0) renameToSave(path);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", "psvexoReadPswd()", rc);
  return rc;
}
