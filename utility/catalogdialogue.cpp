// catalogdialogue.cpp: asks for the Oracle catalogs, see catalogdialogue.h.
#include "utility/catalogdialogue.h"

#include <algorithm>
#include <string_view>

#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "utility/dialogue.h"
#include "utility/report.h"
#include "utility/unx/readpass.h"

namespace {

constexpr char kFunction[] = "utSyncZylToRman()";
constexpr int kEmptyAnswers = 3;

// The prompts of one catalog, by what is asked.
using Prompt = nls::Message<'d'>;
struct Prompts {
  Prompt userName, password, connString;
};
constexpr Prompts kCatalogPrompts = {msg::kAskCatalogUser, msg::kAskCatalogPassword,
                                     msg::kAskCatalogConnect};
constexpr Prompts kDatabasePrompts = {msg::kAskDatabaseUser, msg::kAskDatabasePassword,
                                      msg::kAskDatabaseConnect};

class CatalogDialogue {
 public:
  CatalogDialogue(orcObj_t* orc, const utility::CatalogRequest& request)
      : orc_(orc),
        request_(request),
        prompts_(request.noCatalog ? kDatabasePrompts : kCatalogPrompts) {}

  // Asks for catalog `number` and appends it. Returns 0, 65535 or 2522.
  unsigned short ask(std::uint32_t number, CatalogList* catalogs) {
    objCatInfo_s catalog = {};
    nlprintf(msg::kBlankLine);
    unsigned short rc = askNeeded(prompts_.userName, number, catalog.userName, false);
    if (rc == 0) rc = askNeeded(prompts_.password, number, catalog.password, !request_.fromScript);
    if (rc == 0) rc = askConnString(number, catalog.connString);
    if (rc == 0) {
      catalog.bNoCatalog = request_.noCatalog ? 1 : 0;
      catalog.catalogNumber = number;
      rc = catalogs->addTail(catalog, 0) == 0 ? 0 : msg::kNoMemory.code();
      if (rc != 0) nlprintf(msg::kNoMemory);
    }
    ut::wipe(catalog.password, sizeof catalog.password);
    return rc;
  }

 private:
  // Asks until there is an answer, at most three times.
  template <std::size_t N>
  unsigned short askNeeded(Prompt prompt, std::uint32_t number, char (&answer)[N], bool noEcho) {
    for (int tries = 0; tries < kEmptyAnswers; ++tries) {
      nlprintf(prompt, number);
      bool refused = false;
      if (noEcho) {
        const int length = readPass(answer, static_cast<int>(N) - 1);
        if (length < 0) {
          nlprintf(msg::kStepFailed);
          return utility::kFailed;
        }
        nlprintf(msg::kBlankLine);
        refused = utility::refuseNul(answer, N, length);
      } else {
        ut::ignoreResult(ReadAnswer(answer, static_cast<int>(N)),
                         "a long one makes the script too long, which is refused");
        nlprintf(msg::kBlankLine);
      }
      if (!refused && *answer != '\0' && isUsable(answer)) return 0;
      nlprintf(msg::kAnswerNeeded);
      nlprintf(msg::kBlankLine);
      nlprintf(msg::kBlankLine);
    }
    if (prompt.number() == prompts_.userName.number()) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - no username entered 3 times\n", kFunction);
    } else {
      TRACE(TR_ORCLEVEL0, " %s: Exit - no password entered 3 times\n", kFunction);
    }
    return giveUp();
  }

  // An empty connect string is an answer: it means the default database. One that cannot be used is
  // therefore asked for again; treated as empty, it would query the wrong database.
  template <std::size_t N>
  unsigned short askConnString(std::uint32_t number, char (&answer)[N]) {
    for (int tries = 0; tries < kEmptyAnswers; ++tries) {
      nlprintf(prompts_.connString, number);
      ut::ignoreResult(ReadAnswer(answer, static_cast<int>(N)),
                       "a long one makes the script too long, which is refused");
      nlprintf(msg::kBlankLine);
      if (isUsable(answer)) return 0;
    }
    TRACE(TR_ORCLEVEL0, " %s: Exit - no usable connect string entered 3 times\n", kFunction);
    return giveUp();
  }

  // Every answer becomes part of a line of the script, and a control character could end that line
  // and begin another command. Empties such an answer, after a message.
  template <std::size_t N>
  static bool isUsable(char (&answer)[N]) {
    const std::string_view text(answer);
    const bool usable = std::none_of(text.begin(), text.end(), [](char c) {
      return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
    });
    if (usable) return true;
    ut::wipe(answer, sizeof answer);
    nlprintf(msg::kControlCharacter);
    nlprintf(msg::kBlankLine);
    return false;
  }

  unsigned short giveUp() {
    ut::ignoreResult(gVltApiObjP->dvltTerminate(VltApiStatusObjP, orc_->vltHandle),
                     "the command ends in any case");
    orc_->vltHandle = 0;
    return utility::kFailed;
  }

  orcObj_t* orc_;
  const utility::CatalogRequest request_;
  const Prompts prompts_;
};

}  // namespace

unsigned short utility::askForCatalogs(const CatalogRequest& request, orcObj_t* orc,
                                       CatalogList* catalogs) {
  CatalogDialogue dialogue(orc, request);
  for (std::uint32_t number = 1; number <= request.count; ++number) {
    if (const unsigned short rc = dialogue.ask(number, catalogs); rc != 0) return rc;
  }
  return 0;
}

std::string utility::catalogName(const objCatInfo_s& catalog) {
  return nlsprintf(catalog.bNoCatalog != 0 ? msg::kDatabaseName : msg::kCatalogName,
                   catalog.catalogNumber);
}
