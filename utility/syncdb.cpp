// syncdb.cpp: the command flow, the date dialogue, the pick-list driver, the item printer.
#include "utility/syncdb.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "agent/errormsg.h"
#include "agent/session2.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "utility/utpick.h"

namespace {

constexpr std::size_t kDateTextSize = 16;
constexpr int kDateAnswerSize = 31;

std::string apiText(orcObj_t* orc, int16_t rc) {
  char text[VLT_MAX_RC_TEXT + 1] = "";
  ut::ignoreResult(gVltApiObjP->dvltRCMsg(VltApiStatusObjP, orc->vltHandle, rc, text),
                   "then the text is empty, or says that the code is unknown");
  ut::terminate(text);
  return text;
}

unsigned short runStage(orcObj_t* orc, vexoOptionsInfo_t& options,
                        const vexoCommandsInfo_t& commands) {
  nfDate start = {}, end = {};
  int usedDefaultEnd = 0;
  utGetDates(&start, &end, usedDefaultEnd);
  if (commands.syncdb != 0) return utSyncZylToRman(orc, options, end, start, usedDefaultEnd);
  if (commands.deleteObj != 0) return utDeleteFromZyl(orc, options, end, start);
  if (commands.query != 0) return utQueryZyl(orc, options, end, start);
  TRACE(TR_ORCLEVEL0, " %s: Unexpected command\n", "vexoProcessCommand()");
  return utility::kFailed;
}

}  // namespace

std::string utility::reportCode(orcObj_t* orc, int16_t rc, Report where) {
  std::string text = apiText(orc, rc);
  vexoErrorMsg(text.c_str(), 0);
  if (where == Report::kLogAndTerminal) printFramed(text);
  return text;
}

void utility::printFramed(const std::string& text) {
  nlprintf(msg::kBlankLine);
  nlprintf(msg::kLine, text);
  nlprintf(msg::kBlankLine);
}

void utility::reportText(const std::string& text) {
  vexoErrorMsg(text.c_str(), 0);
  printFramed(text);
}

void utility::removeUnlessTraced(const char* path) {
  if (!TR_ORCLEVEL2) ut::ignoreResult(std::remove(path), "a file left in /tmp harms nobody");
}

// ---- The flow -----------------------------------------------------------------------------------

unsigned short vexoProcessCommand(orcObj_t* orc, vexoOptionsInfo_t& options,
                                  vexoCommandsInfo_t commands) {
  static constexpr char kFunction[] = "vexoProcessCommand()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  unsigned short rc = vexoSession(orc);
  if (rc != 0) {
    nlprintf(msg::kLine, apiText(orc, static_cast<int16_t>(rc)));
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: Exit vexoSession() failed rc = %d\n", kFunction, rc);
    return rc;
  }
  try {
    rc = runStage(orc, options, commands);
  } catch (const std::bad_alloc&) {
    nlprintf(msg::kNoMemory);
    rc = msg::kNoMemory.code();
  }
  TRACE(TR_ORCLEVEL2, " %s: Calling VLTTERMINATE(). vltHandle = %d\n", kFunction, orc->vltHandle);
  ut::ignoreResult(gVltApiObjP->dvltTerminate(VltApiStatusObjP, orc->vltHandle),
                   "the stage's result stands");
  orc->vltHandle = 0;
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  return rc;
}

// ---- Dates --------------------------------------------------------------------------------------

namespace {

struct DateParts {
  char year[5];
  char month[3];
  char day[3];
};

// Joins the three parts in the order that the positions of year and day in the format give.
void arrange(const DateParts& parts, int yearAt, int dayAt, char separator, char* out) {
  const char* order[3] = {parts.month, parts.day, parts.year};
  if (yearAt == 0) {
    order[0] = parts.year;
    order[1] = dayAt == 1 ? parts.day : parts.month;
    order[2] = dayAt == 1 ? parts.month : parts.day;
  } else if (yearAt == 1) {
    order[0] = dayAt == 0 ? parts.day : parts.month;
    order[1] = parts.year;
    order[2] = dayAt == 0 ? parts.month : parts.day;
  } else if (dayAt == 0) {
    order[0] = parts.day;
    order[1] = parts.month;
  }
  std::snprintf(out, kDateTextSize, "%s%c%s%c%s", order[0], separator, order[1], separator,
                order[2]);
}

}  // namespace

void utGetDefaultDates(char* start, char* end) {
  const char* format = ut::date_fmt_str();
  const char separator = format[2];
  int yearAt = 0, dayAt = 0;
  const char* conversion = std::strchr(format, '%');
  for (int at = 0; at < 3 && conversion != nullptr; ++at) {
    const char letter = conversion[1];
    if (letter == 'Y' || letter == 'y') yearAt = at;
    if (letter == 'd') dayAt = at;
    conversion = std::strchr(conversion + 1, '%');
  }
  const nfDate today = ut::localNow();
  DateParts parts = {};
  std::snprintf(parts.year, sizeof parts.year, "%04u", ut::yearOf(today) % 10000);
  std::snprintf(parts.month, sizeof parts.month, "%02u", today.month % 100u);
  std::snprintf(parts.day, sizeof parts.day, "%02u", today.day % 100u);
  arrange({"1990", "01", "01"}, yearAt, dayAt, separator, start);
  arrange(parts, yearAt, dayAt, separator, end);
}

namespace {

// Asks for one date until the answer is valid. True when the default was taken.
bool askDate(nls::Message<'s'> prompt, const char* defaultText, nfDate* date) {
  char answer[kDateAnswerSize];
  const auto ask = [&] {
    nlprintf(prompt, defaultText);
    ut::ignoreResult(ReadAnswer(answer, sizeof answer), "a cut answer is judged as it is");
  };
  nlprintf(msg::kBlankLine);
  ask();
  nlprintf(msg::kBlankLine);
  while (*answer != '\0') {
    const unsigned short rc = dateParse(answer, date, 0);
    if (rc == 0) return false;
    nlprintf(msg::kBadDate);
    nlprintf(msg::kBlankLine);
    TRACE(TR_ORCLEVEL0, " %s: dateParse() failed rc = %d\n", "utGetDates()", rc);
    ask();
  }
  ut::ignoreResult(dateParse(defaultText, date, 0), "a default follows the format");
  return true;
}

}  // namespace

void utGetDates(nfDate* start, nfDate* end, int& usedDefaultEnd) {
  static constexpr char kFunction[] = "utGetDates()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  TRACE(TR_ORCLEVEL1, " %s: Calling utGetDefaultDates\n", kFunction);
  char startText[kDateTextSize], endText[kDateTextSize];
  utGetDefaultDates(startText, endText);
  for (;;) {
    ut::ignoreResult(askDate(msg::kAskStartDate, startText, start),
                     "only the end date's default matters");
    // Never set back by another round: once the default end was taken, later stages reckon with it.
    if (askDate(msg::kAskEndDate, endText, end)) usedDefaultEnd = 1;
    if (dateCmp(*end, *start) >= 0) break;
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kEndBeforeStart);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT\n", kFunction);
}

// ---- Pick list and items ------------------------------------------------------------------------

unsigned short utProcessPickList(orcObj_t* orc, CLinkedList<utZylObj_s>* list) {
  static constexpr char kFunction[] = "utProcessPickList()";
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  unsigned short rc = 0;
  for (;;) {
    rc = static_cast<unsigned short>(pkPickHandler(list));
    if (rc != 0) break;
    rc = utDeleteFiles(list, orc);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utDeleteFiles() failed\n\n", kFunction);
      break;
    }
    if (list->getFirst() != nullptr) continue;
    // The list is shown once more, empty, and only the user's leaving it ends the loop: callers
    // know the cancelled result after the last object. It stays.
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kNothingToShow);
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kBlankLine);
  }
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc =%d\n", kFunction, rc);
  return rc;
}

namespace {

std::string textOr(nls::Message<> message, const char* fallback) {
  const std::string text = nls::plainText(message);
  return text.empty() ? fallback : text;
}

std::string encryptionText(const utZylObj_s& object) {
  if ((object.encryptionType & VLT_ENCRYPT_AES_128) != 0) return "AES_128BIT";
  if ((object.encryptionType & VLT_ENCRYPT_AES_256) != 0) return "AES_256BIT";
  if ((object.encryptionType & VLT_ENCRYPT_DES_56) != 0) return "DES_56BIT";
  return textOr(msg::kNone, "None");
}

}  // namespace

void utPrintBackupItem(utZylObj_s* object) {
  const std::string yes = textOr(msg::kYes, "Yes");
  const std::string no = textOr(msg::kNo, "No");
  const nfDate date = api::toNfDate(object->insDate);
  nlprintf(msg::kItemHeading);
  nlprintf(msg::kItem, object->name, object->owner, ut::formatDate(date).text,
           ut::formatTime(date).text, ut::formatNumber(api::toNumber(object->sizeEstimate)).text,
           object->compressed == 1 ? yes : no, encryptionText(*object),
           object->clientDeduplicated == 1 ? yes : no);
  nlprintf(msg::kBlankLine);
}

// ---- Answers ------------------------------------------------------------------------------------

ut::ReadResult ReadAnswer(char* buffer, int size) {
  char line[1024];
  std::fflush(stdout);
  const ut::ReadResult result = ut::readLine(stdin, line, sizeof line);
  const char* start = line + std::strspn(line, " ");
  const bool whole = ut::copyText(buffer, static_cast<std::size_t>(size), start);
  ut::wipe(line, sizeof line);  // with script input it may have been a password
  return whole ? result : ut::ReadResult::kCut;
}

int PromptYN() { return nls::ask(msg::kAskContinue, msg::kNotAnAnswer) == 0 ? 1 : 0; }
