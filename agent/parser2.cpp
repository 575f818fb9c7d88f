// parser2.cpp: the agent's options file, see parser2.h.
#include "agent/parser2.h"

#include <cctype>
#include <cerrno>
#include <cstring>

#include "agent/errormsg.h"
#include "agent/psutil2.h"
#include "agent/utility2.h"
#include "common/nls/nls.h"
#include "common/ut/ascii.h"
#include "common/ut/psenv.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

constexpr unsigned short kOptionsFailed = msg::kCannotStart.code();
constexpr unsigned short kNotFound = 65535;
constexpr std::size_t kLineSize = 513;

using OptionField = char (orcObj_t::*)[kOptionSize];

struct OptionRow {
  const char* keyword;
  OptionField field;
  bool raw;  // the value is kept exactly as written
};

// The keyword table. The order is that of the context's texts.
constexpr OptionRow optLookup[] = {
    {"VLTI_DIR", &orcObj_t::VLTI_DIR, false},
    {"VLTI_LOG", &orcObj_t::VLTI_LOG, false},
    {"VLTI_ORC_DIR", &orcObj_t::VLTI_ORC_DIR, false},
    {"VLTI_ORC_CONFIG", &orcObj_t::VLTI_ORC_CONFIG, false},
    {"VEXO_AVG_SIZE", &orcObj_t::VEXO_AVG_SIZE, false},
    {"VEXO_FS", &orcObj_t::VEXO_FS, false},
    {"VEXO_NODE", &orcObj_t::VEXO_NODE, false},
    {"VEXO_OWNER", &orcObj_t::VEXO_OWNER, false},
    {"VEXO_PSWDPATH", &orcObj_t::VEXO_PSWDPATH, false},
    {"VEXO_TRACE_MAX", &orcObj_t::VEXO_TRACE_MAX, false},
    {"VEXO_TRACE_FILE", &orcObj_t::VEXO_TRACE_FILE, false},
    {"VEXO_TRACE_FLAGS", &orcObj_t::VEXO_TRACE_FLAGS, false},
    {"VEXO_MGMT_CLASS_2", &orcObj_t::VEXO_MGMT_CLASS_2, false},
    {"VEXO_MGMT_CLASS_3", &orcObj_t::VEXO_MGMT_CLASS_3, false},
    {"VEXO_MGMT_CLASS_4", &orcObj_t::VEXO_MGMT_CLASS_4, false},
    {"VEXO_NUM_BUFFERS", &orcObj_t::VEXO_NUM_BUFFERS, false},
    {"VEXO_DATE_FMT", &orcObj_t::VEXO_DATE_FORMAT, false},
    {"VEXO_TIME_FMT", &orcObj_t::VEXO_TIME_FORMAT, false},
    {"VEXO_NUM_FMT", &orcObj_t::VEXO_NUM_FORMAT, false},
    {"VEXO_LANGUAGE", &orcObj_t::VEXO_LANGUAGE, false},
    {"VEXO_TEST_FLAGS", &orcObj_t::VEXO_TEST_FLAGS, true},
    {"VEXO_ENABLESCRIPTINPUT", &orcObj_t::VEXO_ENABLESCRIPTINPUT, false},
};

bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Takes a line apart in place: the upper-cased keyword, and what follows its one delimiter. The
// keyword is null when the line holds delimiters only, the rest is null when nothing follows.
struct OptionLine {
  char* keyword;
  char* rest;
};
OptionLine splitLine(char* line) {
  static constexpr char kDelimiters[] = " ,\n\t";
  char* keyword = line + std::strspn(line, kDelimiters);
  if (*keyword == '\0') return {nullptr, nullptr};
  char* end = keyword + std::strcspn(keyword, kDelimiters);
  char* rest = *end == '\0' ? nullptr : end + 1;
  *end = '\0';
  ut::upperCase(keyword);
  return {keyword, rest != nullptr && *rest != '\0' ? rest : nullptr};
}

// Drops white space at both ends and every double quote, in place.
char* cleanValue(char* value) {
  while (isSpace(*value)) ++value;
  char* to = value;
  for (const char* from = value; *from != '\0'; ++from) {
    if (*from != '"') *to++ = *from;
  }
  while (to > value && isSpace(to[-1])) --to;
  *to = '\0';
  return value;
}

const OptionRow* findKeyword(const char* keyword) {
  for (const OptionRow& row : optLookup) {
    if (std::strcmp(row.keyword, keyword) == 0) return &row;
  }
  return nullptr;
}

using KeywordMessage = nls::Message<'s', 's'>;

unsigned short fail(KeywordMessage message, const char* keyword, const char* fileName) {
  psNonNlsErrorMsg(nlsprintf(message, keyword, fileName).c_str());
  return kOptionsFailed;
}

unsigned short storeLine(orcObj_t* orc, char* line, const char* name) {
  const OptionLine parts = splitLine(line);
  const char* keyword = parts.keyword == nullptr ? "" : parts.keyword;
  const OptionRow* row = findKeyword(keyword);
  if (row == nullptr) return fail(msg::kUnknownKeyword, keyword, name);
  if (parts.rest == nullptr) return fail(msg::kKeywordWithoutValue, keyword, name);
  const char* value = row->raw ? parts.rest : cleanValue(parts.rest);
  if (*value == '\0' || !ut::copyText(orc->*row->field, value))
    return fail(msg::kKeywordWithoutValue, keyword, name);
  return 0;
}

unsigned short setDefaults(orcObj_t* orc) {
  ut::ignoreResult(ut::copyText(orc->VEXO_AVG_SIZE, "50"), "fits");
  ut::ignoreResult(ut::copyText(orc->VEXO_NUM_BUFFERS, "1"), "fits");
  ut::ignoreResult(ut::copyText(orc->VEXO_FS, agent::kDefaultFileSpace), "fits");
  ut::ignoreResult(ut::copyText(orc->VEXO_PSWDPATH, ""), "fits");
  unsigned short rc = psvexoGetVltiDir(orc->VLTI_DIR, kOptionSize);
  if (rc == 0) rc = psvexoGetVexoDir(orc->VLTI_ORC_DIR, kOptionSize);
  if (rc == 0) rc = psvexoGetVexoDir(orc->VLTI_LOG, kOptionSize);
  return rc;
}

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

unsigned short vexoOpenOptionFile(std::FILE** file, char* name, int* status) {
  *file = agent::openOptionFileQuietly(name).release();
  *status = *file == nullptr ? errno : 0;
  if (*file != nullptr) return 0;
  psNonNlsErrorMsg(nlsprintf(msg::kOptionsFileNotOpened, name).c_str());
  return kOptionsFailed;
}

char* utGetNextLine(char* line, std::size_t size, std::FILE* file, int* lineNumber) {
  while (std::fgets(line, static_cast<int>(size), file) != nullptr) {
    ++*lineNumber;
    const std::size_t length = std::strlen(line);
    if (length > 0 && (line[length - 1] == '\n' || line[length - 1] == '\r')) {
      line[length - 1] = '\0';
    }
    const char* start = line;
    while (isSpace(*start)) ++start;
    if (*start != '\0' && *start != '*') return line;
  }
  return nullptr;
}

unsigned short vexoParseOptionFile(orcObj_t* orc, std::FILE* file, const char* name) {
  char line[kLineSize];
  int lineNumber = 0;
  while (utGetNextLine(line, sizeof line, file, &lineNumber) != nullptr) {
    const unsigned short rc = storeLine(orc, line, name);
    if (rc != 0) return rc;
  }
  if (std::ferror(file) != 0) {  // a directory, or a file that cannot be read to its end
    psNonNlsErrorMsg(nlsprintf(msg::kOptionsFileNotOpened, name).c_str());
    return kOptionsFailed;
  }
  return 0;
}

unsigned short vexoGetOption(std::FILE* file, const char* keyword, char* value) {
  std::rewind(file);
  char line[kLineSize];
  int lineNumber = 0;
  while (utGetNextLine(line, sizeof line, file, &lineNumber) != nullptr) {
    const OptionLine parts = splitLine(line);
    if (parts.keyword == nullptr || std::strcmp(parts.keyword, keyword) != 0) continue;
    if (parts.rest == nullptr) return kNotFound;
    const char* cleaned = cleanValue(parts.rest);
    return *cleaned != '\0' && ut::copyText(value, kOptionSize, cleaned) ? 0 : kNotFound;
  }
  return kNotFound;
}

unsigned short vexoSetOptions(orcObj_t* orc) {
  *orc = {};
  unsigned short rc = setDefaults(orc);
  if (rc != 0) return rc;
  char name[agent::kFileNameSize];
  int status = 0;
  std::FILE* opened = nullptr;
  rc = vexoOpenOptionFile(&opened, name, &status);
  ut::FilePtr file(opened);
  if (rc == 0) rc = vexoParseOptionFile(orc, file.get(), name);
  if (rc != 0) return rc;
  file.reset();
  vexoCheckFS(orc);
  if (*orc->VLTI_ORC_CONFIG == '\0') {
    rc = psvexoGetVltiConfig(orc->VLTI_ORC_CONFIG, kOptionSize);
    if (rc != 0) return rc;
  }
  if (*orc->VEXO_NODE == '\0' && *orc->VEXO_OWNER == '\0') orc->noNodeNoOwner = 1;
  return 0;
}
