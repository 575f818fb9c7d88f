// syncdb_reconcile.cpp: SYNCDB, see syncdb_reconcile.h.
#include "utility/syncdb_reconcile.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>

#include "agent/errormsg.h"
#include "common/nls/nls.h"
#include "common/ut/abbrev.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/psmem.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "utility/bplus.h"
#include "utility/catalogdialogue.h"
#include "utility/doubts.h"
#include "utility/exchange.h"
#include "utility/report.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_listing.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_picklist.h"
#include "utility/syncdb_spool.h"
#include "utility/zylobj.h"

namespace {

constexpr char kFunction[] = "utSyncZylToRman()";

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

// Whether answers come from a script: passwords too are then read from standard input.
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

}  // namespace

unsigned short utility::takeAnswer(const objCatInfo_s& catalog, const char* spoolPath,
                                   dsBPlusTree* tree, Knowledge* knowledge, RunRecord* run) {
  CatalogAnswer answer;
  if (const unsigned short rc = utLoadBTree(spoolPath, &tree, &answer); rc != 0) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - utLoadBTree() failed\n\n", kFunction);
    return rc;
  }
  run->handles += answer.handles;
  knowledge->longestHandle = std::max(knowledge->longestHandle, answer.longest);
  knowledge->lettersLost = knowledge->lettersLost || answer.lettersLost;
  doubtAnswer(catalog, spoolPath, answer, run);
  return 0;
}

unsigned short utility::listOrphans(const nfDate& start, const nfDate& end, orcObj_t* orc,
                                    dsBPlusTree* tree, const Knowledge& knowledge,
                                    ObjectList* orphans, RunRecord* run) {
  RangeCounts counts;
  counts.longestHandle = knowledge.longestHandle;
  if (const unsigned short rc = utGetFileList(start, end, orc, orphans, tree, &counts); rc != 0) {
    return rc;
  }
  run->end = end;
  run->objects = counts.objects;
  run->objectsKnown = counts.known;
  doubtMatches(counts, knowledge.lettersLost, run);
  if (counts.complete && counts.objects > 0 && counts.known == counts.objects) {
    nlprintf(msg::kAllKnown, ut::formatNumber(counts.objects).text);
    nlprintf(msg::kBlankLine);
  }
  return 0;
}

namespace {

// Queries every catalog and puts all their handles into the one tree.
unsigned short loadCatalogs(const CatalogList& catalogs, bool emptyInput, const nfDate& start,
                            const nfDate& end, dsBPlusTree* tree, utility::Knowledge* knowledge,
                            utility::RunRecord* run) {
  utility::ExchangeNames names;
  if (const unsigned short rc = utility::makeExchangeNames(&names); rc != 0) return rc;
  nlprintf(msg::kAskingOracle);
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
    const utility::ExchangeGuard guard(names.script.c_str(), spoolPath);
    unsigned short rc =
        utQueryCatalog(catalog, names.script.c_str(), spoolPath, start, end, emptyInput);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utQueryCatalog() failed. rc = %d\n\n", kFunction, rc);
      // The query's own code is not passed on. Kept on purpose, pinned by
      // Sync.EndsWithoutAListWhenOracleRefusesThePasswordOrTheQuery.
      return utility::kFailed;
    }
    rc = utility::takeAnswer(*catalog, spoolPath, tree, knowledge, run);
    if (rc != 0) return rc;
  }
  return 0;
}

unsigned short synchronize(orcObj_t* orc, const vexoOptionsInfo_t& options, const nfDate& end,
                           const nfDate& start, int usedDefaultEnd) {
  const bool fromScript = scriptInput(*orc);
  const bool noCatalog = options.noCatalog != 0;
  if (usedDefaultEnd != 0) {
    agent::showAndLog(fromScript ? nlsprintf(msg::kEndDateNeeded)
                                 : nlsprintf(msg::kDefaultEndDate));
    if (fromScript) return utility::kFailed;
    nlprintf(msg::kBlankLine);
  }
  if (noCatalog) {
    TRACE(TR_ORCLEVEL2, " %s: Synchronizing with Oracle Control File\n", kFunction);
  } else {
    TRACE(TR_ORCLEVEL2, " %s: Synchronizing with RMAN Catalog\n", kFunction);
  }
  utility::RunRecord run(utility::ListKind::kOrphans);
  utility::doubtDates(start, end, noCatalog, usedDefaultEnd != 0, &run);
  Catalogs catalogs;
  unsigned short rc = utility::askForCatalogs({numberOfCatalogs(options), noCatalog, fromScript},
                                              orc, &catalogs.list);
  if (rc != 0) return rc;
  const std::unique_ptr<dsBPlusTree> tree(new (std::nothrow) dsBPlusTree(utFreeTree));
  if (tree == nullptr) {
    nlprintf(msg::kNoMemory);
    return msg::kNoMemory.code();
  }
  utility::Knowledge knowledge;
  rc = loadCatalogs(catalogs.list, fromScript, start, end, tree.get(), &knowledge, &run);
  catalogs.forgetPasswords();  // the pick list may stay open for hours
  if (rc != 0) return rc;
  TRACE(TR_MEM, " %s: the handles take %zu bytes in %zu blocks\n", kFunction,
        ut::trackedMemory().bytes, ut::trackedMemory().blocks);
  ObjectList orphans;
  rc = utility::listOrphans(start, end, orc, tree.get(), knowledge, &orphans, &run);
  if (rc != 0) return rc;
  if (orphans.getFirst() == nullptr) return utility::kFailed;  // the listing has said so
  return utProcessPickList(orc, &orphans, &run);
}

}  // namespace

unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options, const nfDate& end,
                               const nfDate& start, int usedDefaultEnd) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  const unsigned short rc = synchronize(orc, options, end, start, usedDefaultEnd);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  return rc;
}
