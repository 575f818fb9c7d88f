// syncdb_reconcile.cpp: the SYNCDB command: what the catalogs know, against what the server has.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "agent/errormsg.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/abbrev.h"
#include "common/ut/psfile.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"
#include "utility/syncdb.h"
#include "utility/unx/psutpswd.h"

namespace {

constexpr char kFunction[] = "utSyncZylToRman()";
constexpr int kEmptyAnswers = 3;
constexpr int kSpoolLineSize = 513;
constexpr unsigned short kNoMemory = 2522;
constexpr unsigned short kNoTempName = 2531;
constexpr unsigned short kSpoolNotReadable = 2576;

// The prompts of one catalog, by what is asked.
struct Prompts {
  int userName, password, connString;
};
constexpr Prompts kCatalogPrompts = {2540, 2541, 2542};
constexpr Prompts kDatabasePrompts = {2605, 2606, 2607};

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
    nlprintf(131);
    unsigned short rc = askNeeded(prompts_.userName, number, catalog.userName, false);
    if (rc == 0) rc = askNeeded(prompts_.password, number, catalog.password, !fromScript_);
    if (rc == 0) {
      nlprintf(prompts_.connString, number);
      ut::ignoreResult(ReadAnswer(catalog.connString, sizeof catalog.connString),
                       "a long one makes the script too long, which is refused");
      nlprintf(131);
      catalog.bNoCatalog = noCatalog_ ? 1 : 0;
      catalog.catalogNumber = number;
      rc = catalogs->addTail(catalog, 0) == 0 ? 0 : kNoMemory;
      if (rc != 0) nlprintf(kNoMemory);
    }
    ut::wipe(catalog.password, sizeof catalog.password);
    return rc;
  }

 private:
  // Asks until there is an answer, three times at most.
  template <std::size_t N>
  unsigned short askNeeded(int prompt, std::uint32_t number, char (&answer)[N], bool noEcho) {
    for (int tries = 0; tries < kEmptyAnswers; ++tries) {
      nlprintf(prompt, number);
      if (noEcho) {
        if (readPass(answer, static_cast<int>(N) - 1) < 0) {
          nlprintf(3);
          return utility::kFailed;
        }
      } else {
        ut::ignoreResult(ReadAnswer(answer, static_cast<int>(N)),
                         "a long one makes the script too long, which is refused");
      }
      nlprintf(131);
      if (*answer != '\0') return 0;
      nlprintf(2623);
      nlprintf(131);
      nlprintf(131);
    }
    ut::ignoreResult(gVltApiObjP->dvltTerminate(VltApiStatusObjP, orc_->vltHandle),
                     "the command ends in any case");
    orc_->vltHandle = 0;
    if (prompt == prompts_.userName) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - no username entered 3 times\n", kFunction);
    } else {
      TRACE(TR_ORCLEVEL0, " %s: Exit - no password entered 3 times\n", kFunction);
    }
    return utility::kFailed;
  }

  orcObj_t* orc_;
  const bool fromScript_;
  const bool noCatalog_;
  const Prompts prompts_;
};

// ---- The catalogs' handles ----------------------------------------------------------------------

struct TempNames {
  std::string script, spoolBase;
};

unsigned short makeTempNames(TempNames* names) {
  names->script = ut::tempName("SQLI");
  if (names->script.empty()) {
    nlprintf(kNoTempName);
    nlprintf(131);
    TRACE(TR_ORCLEVEL0, " %s: tempnam() failed for SQLI\n", kFunction);
  }
  names->spoolBase = ut::tempName("SQLO");
  if (names->spoolBase.empty()) {
    nlprintf(kNoTempName);
    nlprintf(131);
    TRACE(TR_ORCLEVEL0, " %s: tempnam() failed for SQLO\n", kFunction);
  }
  if (names->script.empty() || names->spoolBase.empty()) {
    TRACE(TR_ORCLEVEL0, " %s: Exit could not create file name with tempnam()\n\n", kFunction);
    return kNoTempName;
  }
  names->script += ".sql";
  return 0;
}

// Queries every catalog and puts all their handles into the one tree.
unsigned short loadCatalogs(const CatalogList& catalogs, const TempNames& names,
                            const nfDate& start, const nfDate& end, dsBPlusTree* tree) {
  int number = 0;
  for (objCatInfo_s* catalog = catalogs.getFirst(); catalog != nullptr;
       catalog = catalogs.getNext(catalog)) {
    char spoolPath[1280];
    const int wanted =
        std::snprintf(spoolPath, sizeof spoolPath, "%s_%d.out", names.spoolBase.c_str(), ++number);
    if (wanted >= static_cast<int>(sizeof spoolPath)) {
      nlprintf(kNoTempName);
      return kNoTempName;
    }
    unsigned short rc = utQueryCatalog(catalog, names.script.c_str(), spoolPath, start, end);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utQueryCatalog() failed. rc = %d\n\n", kFunction, rc);
      return utility::kFailed;  // the query's own code is not passed on; callers know -1
    }
    rc = utLoadBTree(spoolPath, &tree);
    if (rc != 0) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - utLoadBTree() failed\n\n", kFunction);
      return rc;
    }
  }
  return 0;
}

}  // namespace

unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options, const nfDate& end,
                               const nfDate& start, int usedDefaultEnd) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  const bool fromScript = scriptInput(*orc);
  if (usedDefaultEnd != 0) {
    agent::showAndLog(nlsprintf(fromScript ? 2613 : 2612));
    if (fromScript) return utility::kFailed;
    nlprintf(131);
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
    nlprintf(kNoMemory);
    return kNoMemory;
  }
  TempNames names;
  unsigned short rc = makeTempNames(&names);
  if (rc != 0) return rc;
  nlprintf(2581);
  rc = loadCatalogs(catalogs.list, names, start, end, tree.get());
  catalogs.forgetPasswords();  // the pick list may stay open for hours
  if (rc != 0) return rc;
  ObjectList orphans;
  rc = utGetFileList(start, end, orc, &orphans, tree.get());
  if (rc != 0) return rc;
  if (orphans.getFirst() == nullptr) return utility::kFailed;  // the listing has said so
  rc = utProcessPickList(orc, &orphans);
  TRACE(TR_ORCLEVEL1, " %s: EXIT, rc = %d\n", kFunction, rc);
  return rc;
}

// ---- Spool file and tree ------------------------------------------------------------------------

namespace {

unsigned short reportSpool(const char* path) {
  utility::reportText(nlsprintf(kSpoolNotReadable, path));
  TRACE(TR_ORCLEVEL0, " %s: Exit - error opening file '%s' for reading\n\n", "utLoadBTree()", path);
  return kSpoolNotReadable;
}

void removeSpool(const char* path) {
  if (!TR_ORCLEVEL2) ut::ignoreResult(std::remove(path), "a file left in /tmp harms nobody");
}

// Puts the first token of a line into the tree. Returns 0 or the tree's code.
short insertLine(char* line, dsBPlusTree* tree) {
  static constexpr char kSeparators[] = " ,\n\t";
  char* token = line + std::strspn(line, kSeparators);
  token[std::strcspn(token, kSeparators)] = '\0';
  // sqlplus confirms the date-format statement with "Session altered."
  if (*token == '\0' || std::strcmp(token, "Session") == 0) return 0;
  const short rc = tree->IsertItem(token, static_cast<int>(std::strlen(token)) + 1,
                                   utInsertFilename, utFindFilename);
  if (rc != DUP_VAL) return rc;
  TRACE(TR_ORCLEVEL2, " %s: - duplicate value in bTree\n", "utLoadBTree()");
  return 0;
}

}  // namespace

unsigned short utLoadBTree(const char* spoolPath, dsBPlusTree** tree) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", "utLoadBTree()");
  ut::FilePtr file(std::fopen(spoolPath, "r"));
  if (file == nullptr) return reportSpool(spoolPath);
  char line[kSpoolLineSize];
  while (std::fgets(line, sizeof line, file.get()) != nullptr) {
    const short rc = insertLine(line, *tree);
    if (rc == 0) continue;
    TRACE(TR_ORCLEVEL0, " %s: Exit - unknown error in bTree. rc = %d\n\n", "utLoadBTree()", rc);
    file.reset();
    removeSpool(spoolPath);
    return static_cast<unsigned short>(rc);
  }
  // A file that cannot be read to its end would make the rest of its handles look forgotten.
  const bool readWhole = std::ferror(file.get()) == 0;
  file.reset();
  const unsigned short rc = readWhole ? 0 : reportSpool(spoolPath);
  removeSpool(spoolPath);
  if (rc == 0) TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", "utLoadBTree()");
  return rc;
}

unsigned short utInsertFilename(void* from, void* to) {
  TRACE(TR_ALL, " %s: Enter\n", "utInsertFilename()");
  const char* name = static_cast<const char*>(from);
  std::memcpy(to, name, std::strlen(name) + 1);
  TRACE(TR_ALL, " %s: Exit\n\n", "utInsertFilename()");
  return 0;
}

compare_t utFindFilename(void* searched, void* stored) {
  TRACE(TR_ALL, " %s: Enter\n", "utFindFilename()");
  const int order =
      std::strcmp(static_cast<const char*>(searched), static_cast<const char*>(stored));
  if (order == 0) {
    TRACE(TR_ALL, " %s: Exit - bEqualTo\n\n", "utFindFilename()");
    return bEqualTo;
  }
  if (order > 0) {
    TRACE(TR_ALL, " %s: Exit - bGreaterThan\n\n", "utFindFilename()");
    return bGreaterThan;
  }
  TRACE(TR_ALL, " %s: Exit - bLessThan\n\n", "utFindFilename()");
  return bLessThan;
}

void utFreeTree(void* item) {
  TRACE(TR_ALL, " %s: Enter\n", "utFreeTree()");
  BTreeFree(__FILE__, __LINE__, &item);
  TRACE(TR_ALL, " %s: Exit\n\n", "utFreeTree()");
}
