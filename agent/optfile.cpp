// optfile.cpp: reading the agent's options file line by line, see optfile.h.
#include "agent/optfile.h"

#include <cctype>
#include <cerrno>
#include <cstring>

#include "agent/orcctx.h"
#include "agent/psutil2.h"
#include "common/ut/ascii.h"
#include "common/ut/psenv.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

constexpr unsigned short kNotFound = 65535;

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Drops one pair of the same quotes around a name.
void dropQuotes(char* name) {
  const std::size_t length = std::strlen(name);
  const bool quoted = length > 1 && (*name == '"' || *name == '\'') && name[length - 1] == *name;
  if (!quoted) return;
  std::memmove(name, name + 1, length - 2);
  name[length - 2] = '\0';
}

}  // namespace

ut::FilePtr agent::openOptionFileQuietly(char* name) {
  char found[kFileNameSize];
  if (psGetEnvVariable("VEXO_OPTFILE", found, sizeof found) == 1) {
    dropQuotes(found);
  } else if (psvexoGetDefaultOptfile(found, sizeof found) != 0) {
    *found = '\0';
  }
  if (name != nullptr) {
    ut::ignoreResult(ut::copyText(name, kFileNameSize, found), "of the same size");
  }
  errno = 0;
  return ut::FilePtr(std::fopen(found, "r"));
}

agent::OptionLine agent::splitOptionLine(char* line) {
  static constexpr char kDelimiters[] = " ,\n\t";
  char* keyword = line + std::strspn(line, kDelimiters);
  if (*keyword == '\0') return {nullptr, nullptr};
  char* end = keyword + std::strcspn(keyword, kDelimiters);
  char* rest = *end == '\0' ? nullptr : end + 1;
  *end = '\0';
  ut::upperCase(keyword);
  return {keyword, rest != nullptr && *rest != '\0' ? rest : nullptr};
}

char* agent::cleanOptionValue(char* value) {
  while (isSpace(*value)) ++value;
  char* to = value;
  for (const char* from = value; *from != '\0'; ++from) {
    if (*from != '"') *to++ = *from;
  }
  while (to > value && isSpace(to[-1])) --to;
  *to = '\0';
  return value;
}

char* utGetNextLine(char* line, std::size_t size, std::FILE* file, int* lineNumber) {
  while (std::fgets(line, static_cast<int>(size), file) != nullptr) {
    ++*lineNumber;
    const std::size_t length = std::strlen(line);
    // One character: what is left of "\r\n" is white space at the end of the value.
    if (length > 0 && (line[length - 1] == '\n' || line[length - 1] == '\r')) {
      line[length - 1] = '\0';
    }
    const char* start = line;
    while (isSpace(*start)) ++start;
    if (*start != '\0' && *start != '*') return line;
  }
  return nullptr;
}

unsigned short vexoGetOption(std::FILE* file, const char* keyword, char* value) {
  std::rewind(file);
  char line[agent::kOptionLineSize];
  int lineNumber = 0;
  while (utGetNextLine(line, sizeof line, file, &lineNumber) != nullptr) {
    const agent::OptionLine parts = agent::splitOptionLine(line);
    if (parts.keyword == nullptr || std::strcmp(parts.keyword, keyword) != 0) continue;
    if (parts.rest == nullptr) return kNotFound;
    const char* cleaned = agent::cleanOptionValue(parts.rest);
    return *cleaned != '\0' && ut::copyText(value, kOptionSize, cleaned) ? 0 : kNotFound;
  }
  return kNotFound;
}
