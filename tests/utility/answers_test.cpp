// answers_test.cpp: what becomes of an answer of sqlplus, over profiles, languages, numbers of
// rows, kinds of handles and faults: no object whose handle the catalog holds may be offered,
// unless the answer is refused or a doubt will be shown at the question.
//
// The stand-in for sqlplus writes the answers, under the product's own script and environment; the
// faults are put into the spool file afterwards. The storage library is a list in this file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "api/vltapi.h"
#include "tests/support/captured.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_reconcile.h"

namespace {

const char* const kOrphan = "ORPHAN_df_1_1_1";

// A storage server that has these objects.
class ObjectServer : public DVltApi {
 public:
  explicit ObjectServer(const std::vector<std::string>& names) : DVltApi("", "", "", nullptr) {
    names_ = &names;
    next_ = 0;
    before_ = gVltApiObjP;
    gVltApiObjP = this;
    m_fnvltQuerySessInfoP = [](std::uint32_t, VltSessInfo*) -> std::int16_t { return 0; };
    m_fnvltBeginQueryP = [](std::uint32_t, std::uint8_t, const VltQueryBackup*) -> std::int16_t {
      return 0;
    };
    m_fnvltEndQueryP = [](std::uint32_t) -> std::int16_t { return 0; };
    m_fnvltGetNextQObjP = nextObject;
  }
  ~ObjectServer() {
    ClearPointers();
    gVltApiObjP = before_;
  }
  int Setup() override { return 0; }
  int Cleanup() override { return 0; }

 private:
  static std::int16_t nextObject(std::uint32_t, VltDataBlk* block) {
    if (next_ == names_->size()) return VLT_RC_FINISHED;
    auto& object = *static_cast<VltQryRespBackup*>(block->buffer);
    std::snprintf(object.objName.lowLevel, sizeof object.objName.lowLevel, "/%s",
                  (*names_)[next_++].c_str());
    object.insDate = {2026, 3, 7, 8, 5, 9};
    return VLT_RC_MORE_DATA;
  }

  static inline const std::vector<std::string>* names_ = nullptr;
  static inline std::size_t next_ = 0;
  DVltApi* before_;
};

struct Kind {
  const char* name;
  std::function<std::string(int)> handle;
};

std::string numbered(const char* format, int number) {
  char text[64];
  std::snprintf(text, sizeof text, format, number);
  return text;
}
std::string ofLength(int number, std::size_t length) {
  std::string text = numbered("LONG_%04d_", number);
  for (std::size_t i = text.size(); i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

const Kind kKinds[] = {
    {"short", [](int i) { return numbered("SALES_df_731%04d_1_1", i); }},
    {"some UTF-8",
     [](int i) {
       return numbered(i % 2 == 0 ? "k\xc3\xa4se_\xc5\x82_%04d" : "SALES_df_731%04d_1", i);
     }},
    {"80", [](int i) { return ofLength(i, 80); }},
    {"81 to 512", [](int i) { return ofLength(i, 81 + static_cast<std::size_t>(i) * 37 % 432); }},
    {"quoted", [](int i) { return numbered("\"Q\"\"_%04d\"", i); }},
    {"commas", [](int i) { return numbered(",C,_%04d,", i); }},
    {"blanks", [](int i) { return numbered(" B  of_%04d x", i); }},
    {"UTF-8", [](int i) { return numbered("k\xc3\xa4se_\xc5\x82_%04d", i); }},
};

struct Profile {
  const char* name;
  const char* text;  // of glogin.sql
  bool counted;      // sqlplus counts six rows and more
};

const Profile kProfiles[] = {
    {"none", "", true},
    {"csv", "set markup csv on", true},
    {"cut to 12", "column handle format a12 truncated", true},
    {"cut to 12, not counted", "column handle format a12 truncated\nset feedback off", false},
    {"wrapped at 20", "column handle format a20 wrapped", true},
    {"wrapped at 20, not counted", "column handle format a20 wrapped\nset feedback off", false},
    {"wrap off", "set wrap off", true},
    {"feedback off", "set feedback off", false},
    {"feedback 1", "set feedback 1", true},
    {"timing", "set timing on", true},
    {"timing, not counted", "set timing on\nset feedback off", false},
    {"pages", "set pagesize 7\nset heading on", true},
    {"trimmed", "set trimspool on", true},
};

const char* const kLanguages[] = {nullptr, "GERMAN_GERMANY.AL32UTF8", "FRENCH_FRANCE.US7ASCII"};

bool isRow(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \r");
  return first != line.npos && line.find("selected.") == line.npos &&
         line.find("rows selected") == line.npos && !line.starts_with("Session ") &&
         !line.starts_with("Elapsed");
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end - start));
    start = end == text.npos ? text.size() : end + 1;
  }
  return lines;
}

// Each changes the lines of an answer; false if there is nothing to change.
struct Fault {
  const char* name;
  bool loses;
  std::function<bool(std::vector<std::string>&)> apply;
};

// Removes a fifth of the rows, at least one, from a place in the answer (0: start, 2: end).
bool lose(std::vector<std::string>& lines, std::size_t place) {
  std::vector<std::size_t> rows;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (isRow(lines[i])) rows.push_back(i);
  }
  if (rows.empty()) return false;
  const std::size_t count = (rows.size() + 4) / 5, first = (rows.size() - count) * place / 2;
  const auto begin = lines.begin();
  lines.erase(begin + static_cast<std::ptrdiff_t>(rows[first]),
              begin + static_cast<std::ptrdiff_t>(rows[first + count - 1]) + 1);
  return true;
}
bool addError(std::vector<std::string>& lines, std::size_t at) {
  const std::vector<std::string> error = {
      "ERROR:", "Error while trying to retrieve text for error ORA-01555", ""};
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), error.begin(), error.end());
  return true;
}

const Fault kFaults[] = {
    {"none", false, [](auto&) { return true; }},
    {"CR LF", false,
     [](auto& lines) {
       for (std::string& line : lines) line += '\r';
       return true;
     }},
    {"start lost", true, [](auto& lines) { return lose(lines, 0); }},
    {"middle lost", true, [](auto& lines) { return lose(lines, 1); }},
    {"end lost", true, [](auto& lines) { return lose(lines, 2); }},
    {"error before", false, [](auto& lines) { return addError(lines, 0); }},
    {"error between", false, [](auto& lines) { return addError(lines, lines.size() / 2); }},
    {"error behind", false, [](auto& lines) { return addError(lines, lines.size()); }},
};

class Answers : public WithErrorLog {
 protected:
  void SetUp() override {
    WithErrorLog::SetUp();
    dir_.write("oracle/sqlplus/admin/glogin.sql", "");
    spool_ = dir_.path("SQLOx_1.out");
    std::snprintf(record_.userName, sizeof record_.userName, "rman");
    std::snprintf(record_.password, sizeof record_.password, "rman");
    std::snprintf(record_.connString, sizeof record_.connString, "prod");
    record_.catalogNumber = 1;
  }

  void makeCatalog(const std::vector<std::string>& handles) {
    std::string lines;
    for (const std::string& handle : handles) lines += handle + "\t2026-03-07T08:05:09\n";
    const std::string file = dir_.write("handles", lines);
    std::filesystem::remove_all(dir_.path("catalogs"));
    const std::string command =
        "zylstore catalog add prod --user rman --password rman "
        "--kind recovery && zylstore catalog load prod " +
        file;
    ASSERT_EQ(0, std::system(("{ " + command + "; } >/dev/null").c_str()));
  }

  // The answer of sqlplus with a profile and a language; empty if the query fails.
  std::string answer(const Profile& profile, const char* language) {
    dir_.write("oracle/sqlplus/admin/glogin.sql", std::string(profile.text) + "\n");
    const support::ScopedEnv nls("NLS_LANG", language);
    support::Captured output;
    const nfDate day = ut::makeDate(2026, 3, 7);
    EXPECT_EQ(0, utQueryCatalog(&record_, dir_.path("SQLIx.sql").c_str(), spool_.c_str(), day, day,
                                true));
    output.take();
    return dir_.read("SQLOx_1.out");
  }

  struct Verdict {
    bool refused = false;
    std::vector<std::string> doubts;
    std::vector<std::string> offered;
  };
  Verdict judge(const std::string& spool, const std::vector<std::string>& objects) {
    dir_.write("SQLOx_1.out", spool);
    Verdict verdict;
    utility::RunRecord run(utility::ListKind::kOrphans);
    utility::Knowledge knowledge;
    dsBPlusTree tree(utFreeTree);
    ObjectServer server(objects);
    orcObj_t orc = {};
    orc.vltHandle = 7;
    ObjectList orphans;
    const nfDate day = ut::makeDate(2026, 3, 7);
    support::Captured output;
    verdict.refused = utility::takeAnswer(record_, spool_.c_str(), &tree, &knowledge, &run) != 0;
    if (verdict.refused) return verdict;
    EXPECT_EQ(0, utility::listOrphans(day, day, &orc, &tree, knowledge, &orphans, &run));
    verdict.doubts = run.doubts;
    for (const auto* object = orphans.getFirst(); object != nullptr;
         object = orphans.getNext(object)) {
      verdict.offered.emplace_back(object->name + 1);
    }
    return verdict;
  }

  // What nobody can notice, as docs/safety.md says: of fewer than six rows that are not counted,
  // some were lost.
  static bool cannotBeKnown(const Profile& profile, int rows, const Fault& fault) {
    const bool counted =
        (profile.counted && rows >= 6) || std::strcmp(profile.name, "feedback 1") == 0;
    return fault.loses && !counted && rows - (rows + 4) / 5 < 6;
  }

  // An answer of an ordinary site: it must be neither refused nor doubted.
  static bool isOrdinary(const Kind& kind, int rows, const Profile& profile, const Fault& fault,
                         const char* language) {
    const std::string name = kind.name;
    const bool ascii = language != nullptr && std::strstr(language, "ASCII") != nullptr;
    const bool readable =
        name != "80" && name != "81 to 512" && (name.find("UTF-8") == name.npos || !ascii);
    const std::string profileName = profile.name;
    const bool harmless = profileName == "none" || profileName == "feedback 1" ||
                          profileName == "timing" || profileName == "pages" ||
                          (profileName == "csv" && name == "short");
    return rows > 0 && readable && harmless && !fault.loses &&
           std::strncmp(fault.name, "error", 5) != 0;
  }

  void checkLanguage(const char* language);

  support::ScopedEnv home_{"SANDBOX_HOME", dir_.path().c_str()};
  support::ScopedEnv oracle_{"ORACLE_HOME", dir_.path("oracle").c_str()};
  support::ScopedEnv path_{"PATH", (BUILD_DIRECTORY "/bin/sandbox:" BUILD_DIRECTORY "/bin:" +
                                    std::string(std::getenv("PATH")))
                                       .c_str()};
  objCatInfo_s record_ = {};
  std::string spool_;
};

void Answers::checkLanguage(const char* language) {
  for (const Kind& kind : kKinds) {
    for (const int rows : {0, 1, 5, 6, 1000}) {
      std::vector<std::string> handles, objects;
      for (int i = 0; i < rows; ++i) handles.push_back(kind.handle(i));
      for (const std::string& handle : handles) {
        if (handle.size() < VLT_MAX_LOWLEVEL) objects.push_back(handle);
      }
      objects.insert(objects.begin() + static_cast<std::ptrdiff_t>(objects.size() / 2), kOrphan);
      const std::set<std::string> known(handles.begin(), handles.end());
      makeCatalog(handles);
      for (const Profile& profile : kProfiles) {
        const std::string whole = answer(profile, language);
        for (const Fault& fault : kFaults) {
          std::vector<std::string> lines = linesOf(whole);
          if (!fault.apply(lines)) continue;
          std::string spool;
          for (const std::string& line : lines) spool += line + '\n';
          const Verdict verdict = judge(spool, objects);
          const std::string cell = std::string(kind.name) + ", " + std::to_string(rows) +
                                   " rows, profile: " + profile.name + ", fault: " + fault.name;
          if (isOrdinary(kind, rows, profile, fault, language)) {
            EXPECT_FALSE(verdict.refused) << cell;
            EXPECT_EQ(std::vector<std::string>{}, verdict.doubts) << cell;
            EXPECT_EQ(std::vector<std::string>{kOrphan}, verdict.offered) << cell;
          }
          if (verdict.refused || !verdict.doubts.empty()) continue;
          EXPECT_FALSE(verdict.offered.empty()) << "the orphan is known? " << cell;
          if (cannotBeKnown(profile, rows, fault)) continue;
          for (const std::string& name : verdict.offered) {
            ASSERT_FALSE(known.contains(name)) << name << " is offered: " << cell;
          }
        }
      }
    }
  }
}

// A test for each language, so that they run side by side.
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubt) { checkLanguage(kLanguages[0]); }
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubtInGerman) { checkLanguage(kLanguages[1]); }
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubtInFrenchAscii) {
  checkLanguage(kLanguages[2]);
}

}  // namespace
