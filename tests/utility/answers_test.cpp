// answers_test.cpp: what becomes of an answer of sqlplus, over profiles, languages, numbers of
// rows, kinds of handles and faults: no object whose handle the catalog holds may be offered,
// unless the answer is refused or a doubt will be shown at the question.
//
// The stand-in for sqlplus writes the answers, under the product's own script and environment; the
// faults are put into the spool file afterwards. The storage library is a list in this file.
#include <cstring>
#include <functional>
#include <set>
#include <sstream>

#include "common/ut/ascii.h"
#include "common/ut/strutil.h"
#include "tests/support/captured.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_reconcile.h"

namespace {

const char* const kOrphan = "ORPHAN_df_1_1_1";

// A storage server that has these objects.
class ObjectServer : public support::ScriptedApi {
 public:
  explicit ObjectServer(const std::vector<std::string>& names) {
    names_ = &names;
    next_ = 0;
    m_fnvltQuerySessInfoP = [](std::uint32_t, VltSessInfo*) { return std::int16_t{0}; };
    m_fnvltBeginQueryP = [](auto...) { return std::int16_t{0}; };
    m_fnvltEndQueryP = [](std::uint32_t) { return std::int16_t{0}; };
    m_fnvltGetNextQObjP = [](std::uint32_t, VltDataBlk* block) {
      if (next_ == names_->size()) return std::int16_t{VLT_RC_FINISHED};
      auto& object = *static_cast<VltQryRespBackup*>(block->buffer);
      EXPECT_TRUE(ut::copyText(object.objName.lowLevel, "/" + (*names_)[next_++]));
      object.insDate = {2026, 3, 7, 8, 5, 9};
      return std::int16_t{VLT_RC_MORE_DATA};
    };
  }

 private:
  static inline const std::vector<std::string>* names_ = nullptr;
  static inline std::size_t next_ = 0;
};

const struct Kind {
  const char *name, *even, *odd;     // with the number
  std::size_t length = 0, more = 1;  // at least so long, and up to so much longer
} kKinds[] = {{"short", "SALES_df_731%04d_1_1", "SALES_df_731%04d_1_1"},
              {"some UTF-8", "k\xc3\xa4se_\xc5\x82_%04d", "SALES_df_731%04d_1"},
              {"80", "LONG_%04d_", "LONG_%04d_", 80},
              {"81 to 512", "LONG_%04d_", "LONG_%04d_", 81, 432},
              {"quoted", "\"Q\"\"_%04d\"", "\"Q\"\"_%04d\""},
              {"commas", ",C,_%04d,", ",C,_%04d,"},
              {"blanks", " B  of_%04d x", " B  of_%04d x"},
              {"UTF-8", "k\xc3\xa4se_\xc5\x82_%04d", "k\xc3\xa4se_\xc5\x82_%04d"}};

std::string handleOf(const Kind& kind, unsigned number) {
  char start[64];
  std::snprintf(start, sizeof start, number % 2 == 0 ? kind.even : kind.odd, number);
  std::string text = start;
  const std::size_t length = kind.length + number * std::size_t{37} % kind.more;
  for (std::size_t i = text.size(); i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

constexpr unsigned kNever = 1000000;
const struct Profile {
  const char *name, *text;  // of glogin.sql
  unsigned countedFrom;     // so many rows sqlplus counts
  bool harmless;
  unsigned refused, doubted;  // answers of all kinds and faults, in UTF-8
} kProfiles[] = {
    {"none", "", 6, true, 174, 45},
    {"csv", "set markup csv on", 6, false, 178, 54},
    {"cut", "column handle format a12 truncated", 6, false, 168, 93},
    {"cut, silent", "column handle format a12 truncated\nset feedback off", kNever, false, 120,
     144},
    {"wrapped", "column handle format a20 wrapped", 6, false, 176, 50},
    {"wrapped, silent", "column handle format a20 wrapped\nset feedback off", kNever, false, 120,
     112},
    {"wrap off", "set wrap off", 6, false, 272, 27},
    {"feedback off", "set feedback off", kNever, false, 120, 104},
    {"feedback 1", "set feedback 1", 1, true, 221, 19},
    {"timing", "set timing on", 6, true, 174, 45},
    {"timing, silent", "set timing on\nset feedback off", kNever, false, 120, 104},
    {"pages", "set pagesize 7\nset heading on", 6, true, 174, 45},
    {"trimmed", "set trimspool on", 6, false, 182, 59},
};

bool isRow(const std::string& line) {
  const std::size_t first = line.find_first_not_of(" \r");
  return first != line.npos && line.find("selected.") == line.npos &&
         line.find("rows selected") == line.npos && !line.starts_with("Session ") &&
         !line.starts_with("Elapsed");
}

// Changes the lines of an answer; false if there is nothing to change.
using Change = std::function<bool(std::vector<std::string>&)>;

// Removes a fifth of the rows, at least one, from a place in the answer (0: start, 2: end).
Change lose(std::size_t place) {
  return [place](std::vector<std::string>& lines) {
    std::vector<std::size_t> rows;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      if (isRow(lines[i])) rows.push_back(i);
    }
    if (rows.empty()) return false;
    const std::size_t count = (rows.size() + 4) / 5, first = (rows.size() - count) * place / 2;
    const auto at = [&](std::size_t row) {
      return lines.begin() + static_cast<std::ptrdiff_t>(rows[row]);
    };
    lines.erase(at(first), at(first + count - 1) + 1);
    return true;
  };
}
// Adds an error after a part of the lines, in halves.
Change addError(std::size_t halves) {
  return [halves](std::vector<std::string>& lines) {
    const auto at = static_cast<std::ptrdiff_t>(lines.size() * halves / 2);
    lines.insert(lines.begin() + at,
                 {"ERROR:", "Error while trying to retrieve text for error ORA-01555", ""});
    return true;
  };
}
bool endWithCarriageReturns(std::vector<std::string>& lines) {
  for (std::string& line : lines) line += '\r';
  return true;
}

const struct Fault {
  const char* name;
  bool loses, harmless;
  Change apply;
} kFaults[] = {{"none", false, true, [](auto&) { return true; }},
               {"CR LF", false, true, endWithCarriageReturns},
               {"start lost", true, false, lose(0)},
               {"middle lost", true, false, lose(1)},
               {"end lost", true, false, lose(2)},
               {"error before", false, false, addError(0)},
               {"error between", false, false, addError(1)},
               {"error after", false, false, addError(2)}};

class Answers : public WithErrorLog {
 protected:
  void makeCatalog(const std::vector<std::string>& handles) {
    std::string lines;
    for (const std::string& handle : handles) lines += handle + "\t2026-03-07T08:05:09\n";
    std::filesystem::remove_all(dir_.path("catalogs"));
    const std::string command =
        "{ zylstore catalog add prod --user rman --password rman --kind recovery && "
        "zylstore catalog load prod " +
        dir_.write("handles", lines) + "; } >/dev/null";
    ASSERT_EQ(0, std::system(command.c_str()));
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
    bool refused;
    std::vector<std::string> doubts, offered;
  };
  Verdict judge(const std::string& spool, const std::vector<std::string>& objects) {
    dir_.write("SQLOx_1.out", spool);
    utility::RunRecord run(utility::ListKind::kOrphans);
    utility::Knowledge knowledge;
    dsBPlusTree tree(utFreeTree);
    support::Captured output;
    const unsigned short rc = utility::takeAnswer(record_, spool_.c_str(), &tree, &knowledge, &run);
    if (rc != 0) return {true, {}, {}};
    ObjectServer server(objects);
    orcObj_t orc = {};
    ObjectList orphans;
    const nfDate day = ut::makeDate(2026, 3, 7);
    EXPECT_EQ(0, utility::listOrphans(day, day, &orc, &tree, knowledge, &orphans, &run));
    Verdict verdict = {false, run.doubts, {}};
    for (const auto* object = orphans.getFirst(); object != nullptr;
         object = orphans.getNext(object)) {
      verdict.offered.emplace_back(object->name + 1);
    }
    return verdict;
  }

  // An answer of an ordinary site: it must be neither refused nor doubted.
  static bool isOrdinary(const Kind& kind, unsigned rows, const Profile& profile,
                         const Fault& fault, const char* language) {
    const bool lost =
        language != nullptr && std::strstr(language, "ASCII") != nullptr && !ut::isAscii(kind.even);
    const bool csv = std::strcmp(profile.name, "csv") == 0 && &kind == kKinds;
    return rows > 0 && kind.length == 0 && !lost && (profile.harmless || csv) && fault.harmless;
  }

  void checkLanguage(const char* language) {
    std::map<const Profile*, std::pair<unsigned, unsigned>> counts;  // refused, doubted
    for (const Kind& kind : kKinds) {
      for (const unsigned rows : {0u, 1u, 5u, 6u, 1000u}) {
        std::vector<std::string> handles, objects;
        for (unsigned i = 0; i < rows; ++i) {
          handles.push_back(handleOf(kind, i));
          if (handles.back().size() < VLT_MAX_LOWLEVEL) objects.push_back(handles.back());
        }
        objects.insert(objects.begin() + static_cast<std::ptrdiff_t>(objects.size() / 2), kOrphan);
        const std::set<std::string> known(handles.begin(), handles.end());
        makeCatalog(handles);
        for (const Profile& profile : kProfiles) {
          std::istringstream whole(answer(profile, language));
          std::vector<std::string> answered;
          for (std::string line; std::getline(whole, line);) answered.push_back(line);
          for (const Fault& fault : kFaults) {
            std::vector<std::string> lines = answered;
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
            counts[&profile].first += verdict.refused ? 1 : 0;
            counts[&profile].second += verdict.doubts.empty() ? 0 : 1;
            if (verdict.refused || !verdict.doubts.empty()) continue;
            EXPECT_FALSE(verdict.offered.empty()) << "the orphan is known? " << cell;
            // Nobody can notice, as docs/safety.md says, if of few rows some are lost uncounted.
            const bool few = rows < profile.countedFrom && rows - (rows + 4) / 5 < 6;
            if (fault.loses && few) continue;
            for (const std::string& name : verdict.offered) {
              ASSERT_FALSE(known.contains(name)) << name << " is offered: " << cell;
            }
          }
        }
      }
    }
    if (language != nullptr && std::strstr(language, "UTF8") == nullptr) return;
    for (const auto& [profile, count] : counts) {
      EXPECT_EQ(std::pair(profile->refused, profile->doubted), count) << profile->name;
    }
  }

  support::ScopedEnv home_{"SANDBOX_HOME", dir_.path().c_str()};
  support::ScopedEnv oracle_{"ORACLE_HOME", dir_.path("oracle").c_str()};
  support::ScopedEnv path_{"PATH", (BUILD_DIRECTORY "/bin/sandbox:" BUILD_DIRECTORY "/bin:" +
                                    std::string(std::getenv("PATH")))
                                       .c_str()};
  const objCatInfo_s record_ = {"rman", "rman", "prod", 0, 1};
  const std::string spool_ = dir_.path("SQLOx_1.out");
};

// A test for each language, so that they run side by side.
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubt) { checkLanguage(nullptr); }
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubtInGerman) {
  checkLanguage("GERMAN_GERMANY.AL32UTF8");
}
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubtInFrenchAscii) {
  checkLanguage("FRENCH_FRANCE.US7ASCII");
}

}  // namespace
