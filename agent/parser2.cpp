// parser2.cpp: the agent's options file, see parser2.h.
#include "agent/parser2.h"

#include <cerrno>
#include <cstring>

#include "agent/errormsg.h"
#include "agent/optfile.h"
#include "agent/psutil2.h"
#include "agent/utility2.h"
#include "common/nls/nls.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"

namespace {

constexpr unsigned short kOptionsFailed = msg::kCannotStart.code();

using OptionField = char (orcObj_t::*)[kOptionSize];

struct OptionRow {
  const char* keyword;
  OptionField field;
  bool raw;  // the value is kept exactly as written
};

// The keywords, in the order of the context's texts.
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
  const agent::OptionLine parts = agent::splitOptionLine(line);
  const char* keyword = parts.keyword == nullptr ? "" : parts.keyword;
  const OptionRow* row = findKeyword(keyword);
  if (row == nullptr) return fail(msg::kUnknownKeyword, keyword, name);
  if (parts.rest == nullptr) return fail(msg::kKeywordWithoutValue, keyword, name);
  const char* value = row->raw ? parts.rest : agent::cleanOptionValue(parts.rest);
  if (*value == '\0' || !ut::copyText(orc->*row->field, value)) {
    return fail(msg::kKeywordWithoutValue, keyword, name);
  }
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

}  // namespace

unsigned short vexoOpenOptionFile(std::FILE** file, char* name, int* status) {
  *file = agent::openOptionFileQuietly(name).release();
  *status = *file == nullptr ? errno : 0;
  if (*file != nullptr) return 0;
  psNonNlsErrorMsg(nlsprintf(msg::kOptionsFileNotOpened, name).c_str());
  return kOptionsFailed;
}

unsigned short vexoParseOptionFile(orcObj_t* orc, std::FILE* file, const char* name) {
  char line[agent::kOptionLineSize];
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
