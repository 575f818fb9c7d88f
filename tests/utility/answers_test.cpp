// answers_test.cpp: what becomes of an answer of sqlplus, over profiles, languages, numbers of
// rows, kinds of handles and faults: no object whose handle the catalog holds may be offered,
// unless the answer is refused or a doubt will be shown at the question.
//
// The stand-in for sqlplus writes the answers, under the product's own script and environment; the
// faults are put into the spool file afterwards. The storage library is a list in this file.
#include "common/ut/ascii.h"
#include "common/ut/strutil.h"
#include "tests/support/scripted_api.h"
#include "tests/utility/messages.h"
#include "utility/syncdb_catalog.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_reconcile.h"

namespace {

using std::string, std::pair, std::tuple;
using Texts = std::vector<string>;

const char* const kOrphan = "ORPHAN_df_1_1_1";

// A storage server that has these objects.
struct ObjectServer : support::ScriptedApi {
  explicit ObjectServer(const Texts& names) {
    next = names.data();
    end = next + names.size();
    m_fnvltQuerySessInfoP = [](auto...) { return std::int16_t{0}; };
    m_fnvltBeginQueryP = [](auto...) { return std::int16_t{0}; };
    m_fnvltEndQueryP = [](auto...) { return std::int16_t{0}; };
    m_fnvltGetNextQObjP = [](auto, auto* block) {
      if (next == end) return std::int16_t{VLT_RC_FINISHED};
      auto& object = *static_cast<VltQryRespBackup*>(block->buffer);
      EXPECT_TRUE(ut::copyText(object.objName.lowLevel, "/" + *next++));
      object.insDate = {2026, 3, 7, 8, 5, 9};
      return std::int16_t{VLT_RC_MORE_DATA};
    };
  }
  static inline const string *next, *end;
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

string handleOf(const Kind& kind, unsigned number) {
  char start[64];
  std::snprintf(start, sizeof start, number % 2 == 0 ? kind.even : kind.odd, number);
  string text = start;
  const std::size_t length = kind.length + number * std::size_t{37} % kind.more;
  for (std::size_t i = text.size(); i < length; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

constexpr unsigned kNever = 1000000;
const struct Profile {
  const char* text;      // of glogin.sql
  unsigned countedFrom;  // so many rows sqlplus counts
  bool harmless;
  unsigned refused, doubted;  // answers of all kinds and faults, in UTF-8
} kProfiles[] = {
    {"", 6, true, 174, 45},
    {"set markup csv on", 6, false, 178, 54},
    {"column handle format a12 truncated", 6, false, 168, 93},
    {"column handle format a12 truncated\nset feedback off", kNever, false, 120, 144},
    {"column handle format a20 wrapped", 6, false, 176, 50},
    {"column handle format a20 wrapped\nset feedback off", kNever, false, 120, 112},
    {"set wrap off", 6, false, 272, 27},
    {"set feedback off", kNever, false, 120, 104},
    {"set feedback 1", 1, true, 221, 19},
    {"set timing on", 6, true, 174, 45},
    {"set timing on\nset feedback off", kNever, false, 120, 104},
    {"set pagesize 7\nset heading on", 6, true, 174, 45},
    {"set trimspool on", 6, false, 182, 59},
};

bool isRow(const string& line) {
  return line.find_first_not_of(" \r") != line.npos && line.find("selected") == line.npos &&
         !line.starts_with("Session ") && !line.starts_with("Elapsed");
}

// What is done to an answer: 'L' loses a fifth of its rows, at least one, from a place (0: start,
// 2: end); 'E' adds an error after so many halves of its lines; 'C' ends them with carriage
// returns.
const struct Fault {
  const char* name;
  char kind;
  std::size_t place;
} kFaults[] = {
    {"none", ' ', 0},          {"CR LF", 'C', 0},       {"start lost", 'L', 0},
    {"middle lost", 'L', 1},   {"end lost", 'L', 2},    {"error before", 'E', 0},
    {"error between", 'E', 1}, {"error after", 'E', 2},
};

// Applies a fault; false if there is nothing to change.
bool apply(const Fault& fault, Texts* lines) {
  std::vector<Texts::iterator> rows;
  for (auto line = lines->begin(); line != lines->end(); ++line) {
    if (isRow(*line)) rows.push_back(line);
  }
  if (fault.kind == 'L') {
    if (rows.empty()) return false;
    const std::size_t count = (rows.size() + 4) / 5,
                      first = (rows.size() - count) * fault.place / 2;
    lines->erase(rows[first], rows[first + count - 1] + 1);
  } else if (fault.kind == 'E') {
    lines->insert(lines->begin() + static_cast<std::ptrdiff_t>(lines->size() * fault.place / 2),
                  {"ERROR:", "Error while trying to retrieve text for error ORA-01555", ""});
  } else if (fault.kind == 'C') {
    for (string& line : *lines) line += '\r';
  }
  return true;
}

class Answers : public WithErrorLog {
 protected:
  // The lines that sqlplus answers with a profile and a language; none if the query fails.
  Texts answer(const Profile& profile, const char* language) {
    dir_.write("sqlplus/admin/glogin.sql", profile.text + string("\n"));
    const support::ScopedEnv nls("NLS_LANG", language);
    support::Captured output;
    EXPECT_EQ(0, utQueryCatalog(&record_, "SQLIx.sql", "SQLOx_1.out", day_, day_, true));
    Texts lines;
    std::istringstream whole(dir_.read("SQLOx_1.out"));
    for (string line; std::getline(whole, line);) lines.push_back(line);
    return lines;
  }

  // Whether an answer is accepted; then `run` has its doubts, and these objects are offered.
  bool accepts(const Texts& lines, const Texts& objects, utility::RunRecord* run, Texts* offered) {
    string spool;
    for (const string& line : lines) spool += line + '\n';
    dir_.write("SQLOx_1.out", spool);
    utility::Knowledge knowledge;
    dsBPlusTree tree(utFreeTree);
    support::Captured output;
    if (takeAnswer(record_, "SQLOx_1.out", &tree, &knowledge, run) != 0) return false;
    ObjectServer server(objects);
    orcObj_t orc = {};
    ObjectList list;
    EXPECT_EQ(0, utility::listOrphans(day_, day_, &orc, &tree, knowledge, &list, run));
    for (auto* o = list.getFirst(); o; o = list.getNext(o)) offered->push_back(o->name + 1);
    return true;
  }

  void checkLanguage(const char* language) {
    std::map<const Profile*, pair<unsigned, unsigned>> counts;  // refused, doubted
    const string name = language == nullptr ? "UTF8" : language;
    for (const Kind& kind : kKinds) {
      for (const unsigned rows : {0u, 1u, 5u, 6u, 1000u}) {
        Texts handles, objects;
        for (unsigned i = 0; i < rows; ++i) {
          handles.push_back(handleOf(kind, i));
          if (handles.back().size() < VLT_MAX_LOWLEVEL) objects.push_back(handles.back());
        }
        objects.insert(objects.begin() + static_cast<std::ptrdiff_t>(objects.size() / 2), kOrphan);
        string lines;
        for (const string& handle : handles) lines += handle + "\t2026-03-07T08:05:09\n";
        dir_.write("handles", lines);
        std::filesystem::remove_all("catalogs");
        ASSERT_EQ(0, std::system(
                         "{ zylstore catalog add prod --user rman --password rman --kind recovery "
                         "&& zylstore catalog load prod handles; } >/dev/null"));
        const bool lost = name.ends_with("ASCII") && !ut::isAscii(kind.even);
        const bool ordinary = rows > 0 && kind.length == 0 && !lost;
        for (const Profile& profile : kProfiles) {
          const bool csv = &profile == &kProfiles[1] && &kind == kKinds;
          const Texts answered = answer(profile, language);
          for (const Fault& fault : kFaults) {
            Texts changed = answered, offered;
            if (!apply(fault, &changed)) continue;
            utility::RunRecord run(utility::ListKind::kOrphans);
            const bool refused = !accepts(changed, objects, &run, &offered);
            SCOPED_TRACE(kind.name + (", " + std::to_string(rows)) +
                         " rows, profile: " + profile.text + ", fault: " + fault.name);
            // An answer of an ordinary site must be neither refused nor doubted.
            if (ordinary && (profile.harmless || csv) && (fault.kind == ' ' || fault.kind == 'C')) {
              EXPECT_EQ(tuple(false, Texts{}, Texts{kOrphan}), tuple(refused, run.doubts, offered));
            }
            counts[&profile].first += refused ? 1 : 0;
            counts[&profile].second += refused || run.doubts.empty() ? 0 : 1;
            if (refused || !run.doubts.empty()) continue;
            EXPECT_FALSE(offered.empty()) << "the orphan is known?";
            // Nobody can notice, as docs/safety.md says, if of few rows some are lost uncounted.
            const bool few = rows < profile.countedFrom && rows - (rows + 4) / 5 < 6;
            if (fault.kind == 'L' && few) continue;
            ASSERT_EQ(Texts{kOrphan}, offered);
          }
        }
      }
    }
    if (!name.ends_with("UTF8")) return;
    for (const auto& [profile, count] : counts) {
      EXPECT_EQ(pair(profile->refused, profile->doubted), count) << profile->text;
    }
  }

  support::ScopedEnv home_{"SANDBOX_HOME", dir_.path().c_str()};
  support::ScopedEnv oracle_{"ORACLE_HOME", dir_.path().c_str()};
  support::ScopedEnv path_{
      "PATH", BUILD_DIRECTORY "/bin/sandbox:" BUILD_DIRECTORY "/bin:/usr/local/bin:/usr/bin:/bin"};
  const objCatInfo_s record_ = {"rman", "rman", "prod", 0, 1};
  const nfDate day_ = ut::makeDate(2026, 3, 7);
};

// A test for each language, so that they run side by side.
TEST_F(Answers, NeverOfferWhatACatalogHoldsWithoutADoubt) { checkLanguage(nullptr); }
TEST_F(Answers, NeverOfferWhatACatalogHoldsInGerman) { checkLanguage("GERMAN_GERMANY.AL32UTF8"); }
TEST_F(Answers, NeverOfferWhatACatalogHoldsInAscii) { checkLanguage("FRENCH_FRANCE.US7ASCII"); }

}  // namespace
