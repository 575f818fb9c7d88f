// syncdb_reconcile.cpp: SYNCDB, see syncdb_reconcile.h.
#include "utility/syncdb_reconcile.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "agent/errormsg.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/abbrev.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "utility/bplus.h"
#include "utility/dialogue.h"
#include "utility/exchange.h"
#include "utility/findings.h"
#include "utility/report.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_listing.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_picklist.h"
#include "utility/syncdb_spool.h"
#include "utility/unx/readpass.h"
#include "utility/zylobj.h"

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

// The catalogs of a run.
struct Catalogs {
  CatalogList list;
  ~Catalogs() { forgetPasswords(); }
  void forgetPasswords() {
    for (objCatInfo_s* catalog = list.getFirst(); catalog != nullptr;
         catalog = list.getNext(catalog)) {
      ut::wipe(catalog->password, sizeof catalog->password);
    }
  }
};

// Answers come from a script: the passwords too are read from standard input.
bool scriptInput(const orcObj_t& orc) {
  char setting[kOptionSize];
  ut::ignoreResult(ut::copyText(setting, orc.VEXO_ENABLESCRIPTINPUT), "of the same size");
  if (*setting == '\0') return TEST_ENABLESCRIPTINPUT != 0;
  ut::upperCase(setting);
  return Abbrev(setting, "YES", 1);
}

std::uint32_t numberOfCatalogs(const vexoOptionsInfo_t& options) {
  const std::int32_t wanted =
      options.noCatalog != 0 ? options.numOrcInstances : options.numCatalogs;
  return wanted < 2 ? 1 : static_cast<std::uint32_t>(wanted);
}

// ---- Asking for the catalogs --------------------------------------------------------------------

class CatalogDialogue {
 public:
  CatalogDialogue(orcObj_t* orc, bool fromScript, bool noCatalog)
      : orc_(orc),
        fromScript_(fromScript),
        noCatalog_(noCatalog),
        prompts_(noCatalog ? kDatabasePrompts : kCatalogPrompts) {}

  // Asks for catalog `number` and appends it. Returns 0, 65535 or 2522.
  unsigned short ask(std::uint32_t number, CatalogList* catalogs) {
    objCatInfo_s catalog = {};
    nlprintf(msg::kBlankLine);
    unsigned short rc = askNeeded(prompts_.userName, number, catalog.userName, false);
    if (rc == 0) rc = askNeeded(prompts_.password, number, catalog.password, !fromScript_);
    if (rc == 0) rc = askConnString(number, catalog.connString);
    if (rc == 0) {
      catalog.bNoCatalog = noCatalog_ ? 1 : 0;
      catalog.catalogNumber = number;
      rc = catalogs->addTail(catalog, 0) == 0 ? 0 : msg::kNoMemory.code();
      if (rc != 0) nlprintf(msg::kNoMemory);
    }
    ut::wipe(catalog.password, sizeof catalog.password);
    return rc;
  }

 private:
  // Asks until there is an answer, three times at most.
  template <std::size_t N>
  unsigned short askNeeded(Prompt prompt, std::uint32_t number, char (&answer)[N], bool noEcho) {
    for (int tries = 0; tries < kEmptyAnswers; ++tries) {
      nlprintf(prompt, number);
      if (noEcho) {
        if (readPass(answer, static_cast<int>(N) - 1) < 0) {
          nlprintf(msg::kStepFailed);
          return utility::kFailed;
        }
      } else {
        ut::ignoreResult(ReadAnswer(answer, static_cast<int>(N)),
                         "a long one makes the script too long, which is refused");
      }
      nlprintf(msg::kBlankLine);
      if (*answer != '\0' && isUsable(answer)) return 0;
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
  // therefore asked for again; taken for empty, it would ask the wrong database.
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

  // Every answer becomes part of a line of the script: a control character could end that line and
  // begin a command of its own. Empties such an answer, after a message.
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
  const bool fromScript_;
  const bool noCatalog_;
  const Prompts prompts_;
};

// ---- The catalogs' handles ----------------------------------------------------------------------

// Keeps what a catalog knew for the question before a deletion. A catalog that knows nothing is
// allowed, but whoever answers the question must hear of it.
void noteAnswer(const objCatInfo_s& catalog, const utility::CatalogAnswer& answer,
                utility::Findings* findings) {
  ++findings->catalogsAsked;
  findings->handlesKnown += answer.handles;
  if (answer.rows != 0) return;
  ++findings->catalogsWithoutHandles;
  utility::reportText(nlsprintf(msg::kCatalogWithoutPieces, catalog.catalogNumber));
}

// Queries every catalog and puts all their handles into the one tree.
unsigned short loadCatalogs(const CatalogList& catalogs, const utility::ExchangeNames& names,
                            const nfDate& start, const nfDate& end, dsBPlusTree* tree,
                            utility::Findings* findings) {
  int number = 0;
  for (objCatInfo_s* catalog = catalogs.getFirst(); catalog != nullptr;
       catalog = catalogs.getNext(catalog)) {
    char spoolPath[1280];
    const int wanted =
        std::snprintf(spoolPath, sizeof spoolPath, "%s_%d.out", names.spoolBase.c_str(), ++number);
    if (wanted >= static_cast<int>(sizeof spoolPath)) {
      nlprintf(msg::kNoTempName);
      return msg::kNoTempName.code();
    }
    unsigned short rc = utQueryCatalog(catalog, names.script.c_str(), spoolPath, start, end);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utQueryCatalog() failed. rc = %d\n\n", kFunction, rc);
      // The query's own code is not passed on. Kept on purpose, pinned by
      // Sync.EndsWithoutAListWhenOracleRefusesThePassword.
      return utility::kFailed;
    }
    utility::CatalogAnswer answer;
    rc = utLoadBTree(spoolPath, &tree, &answer);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utLoadBTree() failed\n\n", kFunction);
      return rc;
    }
    noteAnswer(*catalog, answer, findings);
  }
  return 0;
}

}  // namespace

unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options, const nfDate& end,
                               const nfDate& start, int usedDefaultEnd) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  const bool fromScript = scriptInput(*orc);
  if (usedDefaultEnd != 0) {
    agent::showAndLog(fromScript ? nlsprintf(msg::kEndDateNeeded)
                                 : nlsprintf(msg::kDefaultEndDate));
    if (fromScript) return utility::kFailed;
    nlprintf(msg::kBlankLine);
  }
  if (options.noCatalog != 0) {
    TRACE(TR_ORCLEVEL2, " %s: Synchronizing with Oracle Control File\n", kFunction);
  } else {
    TRACE(TR_ORCLEVEL2, " %s: Synchronizing with RMAN Catalog\n", kFunction);
  }
  Catalogs catalogs;
  CatalogDialogue dialogue(orc, fromScript, options.noCatalog != 0);
  const std::uint32_t count = numberOfCatalogs(options);
  for (std::uint32_t number = 1; number <= count; ++number) {
    const unsigned short rc = dialogue.ask(number, &catalogs.list);
    if (rc != 0) return rc;
  }
  const std::unique_ptr<dsBPlusTree> tree(new (std::nothrow) dsBPlusTree(utFreeTree));
  if (tree == nullptr) {
    nlprintf(msg::kNoMemory);
    return msg::kNoMemory.code();
  }
  utility::ExchangeNames names;
  unsigned short rc = utility::makeExchangeNames(&names);
  if (rc != 0) return rc;
  utility::Findings findings;
  nlprintf(msg::kAskingOracle);
  rc = loadCatalogs(catalogs.list, names, start, end, tree.get(), &findings);
  catalogs.forgetPasswords();  // the pick list may stay open for hours
  if (rc != 0) return rc;
  ObjectList orphans;
  rc = utGetFileList(start, end, orc, &orphans, tree.get());
  if (rc != 0) return rc;
  if (orphans.getFirst() == nullptr) return utility::kFailed;  // the listing has said so
  rc = utProcessPickList(orc, &orphans, &findings);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  return rc;
}
