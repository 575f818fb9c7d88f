// fault_test.cpp: every call of the client library that a flow makes fails once, in every flow.
//
// There are seven objects a to g, and k, which the catalog knows; a, b, d, e and g are picked. A
// transaction may hold three objects, so two are deleted in each: (a b) (d e) (g).
#include "tests/flows/site.h"

namespace {

constexpr int kLeft = 300;      // the code of a pick list that was left
constexpr int kNormal = -1000;  // the status of a run without a fault

// Where the library's text for a failure is shown; both: in the log and on the terminal.
enum Told { kNo, kLog, kBoth };

// The initials of QUERY, DELETE, SYNCDB; the faults as zylstore takes them, of which the row is
// about the first one; the status; where it is told; the number in the library's text, empty if its
// function and code are told instead; the picked objects that were deleted, for QUERY those shown.
using Row = std::tuple<std::string, std::vector<std::string>, int, Told, std::string, std::string>;
const Row kRows[] = {
    {"QDS", {"SetUp 2409"}, 2409, kBoth, "2409", ""},
    {"QDS", {"InitEx 51"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsgEx 2405"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsg 2405 --times 2"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsg 2405 --times 2", "RCMsgEx 2405"}, 51, kBoth, "", ""},
    {"QDS", {"InitEx -50 --times 4"}, kNormal, kNo, "", "abdeg"},  // tried five times
    {"QDS", {"InitEx -50 --times 5"}, -50, kBoth, "0050", ""},
    {"QDS", {"QuerySessOptions 2403"}, 2403, kBoth, "2403", ""},
    {"QDS", {"QuerySessInfo 53"}, 53, kBoth, "0053", ""},
    {"QDS", {"QuerySessInfo 53 --after 1"}, 53, kLog, "0053", ""},
    {"QDS", {"BeginQuery 2410"}, 2410, kBoth, "2410", ""},
    // The query is cut short: what was listed before is offered.
    {"QD", {"GetNextQObj 2410"}, kNormal, kNo, "", ""},
    {"S", {"GetNextQObj 2410"}, 65535, kNo, "", ""},
    {"QD", {"GetNextQObj 2"}, kNormal, kLog, "0000", ""},  // kept on purpose: code 0 in the log
    {"S", {"GetNextQObj 2"}, 65535, kLog, "0000", ""},
    {"QDS", {"GetNextQObj 2410 --after 1"}, kNormal, kNo, "", "a"},
    {"QDS", {"GetNextQObj -50 --after 2"}, kNormal, kNo, "", "ab"},
    {"QDS", {"GetNextQObj 2410 --after 3"}, kNormal, kNo, "", "ab"},
    {"QDS", {"GetNextQObj 54 --after 4"}, kNormal, kNo, "", "abd"},
    {"QDS", {"GetNextQObj 2302 --after 5"}, kNormal, kNo, "", "abde"},
    {"QDS", {"GetNextQObj 122 --after 5"}, kNormal, kNo, "", "abdeg"},  // the query continues
    {"QDS", {"GetNextQObj 121 --after 6"}, kNormal, kNo, "", "abde"},
    {"QDS", {"GetNextQObj 2410 --after 7"}, kNormal, kNo, "", "abdeg"},
    {"QDS", {"GetNextQObj 2410 --after 8"}, kNormal, kNo, "", "abdeg"},
    {"QDS", {"EndQuery 2404"}, kNormal, kNo, "", "abdeg"},
    {"DS", {"BeginTxn 2404"}, 2404, kBoth, "2404", ""},
    {"DS", {"BeginTxn 2404 --after 1"}, 2404, kLog, "2404", "ab"},
    {"DS", {"BeginTxn 2410 --after 2"}, 2410, kLog, "2410", "abde"},
    {"DS", {"DeleteObj 54"}, 54, kBoth, "0054", ""},
    {"DS", {"DeleteObj 54", "RCMsg 2405"}, 54, kBoth, "", ""},
    {"DS", {"DeleteObj 2 --after 1"}, 2, kBoth, "0002", ""},
    {"DS", {"DeleteObj 2407 --after 2"}, 2407, kBoth, "2407", "ab"},
    {"DS", {"DeleteObj 2 --after 3"}, 2, kBoth, "0002", "ab"},
    {"DS", {"DeleteObj 2410 --after 4"}, 2410, kBoth, "2410", "abde"},
    {"DS", {"DeleteObj 54 --after 3", "EndTxn 2410 --after 1"}, 2410, kBoth, "2410", "ab"},
    {"DS", {"DeleteObj 54", "EndTxn 2302 --reason 2"}, 2, kBoth, "0054", ""},
    {"DS", {"DeleteObj 54", "EndTxn 0 --reason 2"}, kNormal, kBoth, "0054", ""},
    {"DS", {"EndTxn 2302 --reason 2"}, 2, kLog, "0002", ""},
    {"DS", {"EndTxn 2302"}, 2302, kLog, "2302", ""},
    {"DS", {"EndTxn 2410 --after 1"}, 2410, kLog, "2410", "ab"},
    {"DS", {"EndTxn 2302 --reason 54 --after 2"}, 54, kBoth, "0054", "abde"},
    {"DS", {"EndTxn 2302 --after 2"}, 2302, kBoth, "2302", "abde"},
    // A reason without a code counts as code 0: the list is shown again, with nothing picked.
    {"DS", {"EndTxn 0 --reason 54 --after 1"}, kNormal, kLog, "0000", "ab"},
    {"DS", {"EndTxn 0 --reason 54 --after 2"}, kNormal, kBoth, "0000", "abde"},
    {"QDS", {"Terminate 2402"}, kNormal, kNo, "", "abdeg"},
    {"QDS", {"CleanUp 2401"}, kNormal, kNo, "", "abdeg"},
};

class Fault : public Site {
 protected:
  // Runs `command` with all answers typed ahead; then the shell shows the terminal's settings.
  void play(const string& command, const string& given, int status) {
    run("vexosync " + command + "; s=$?; stty -a; exit $s");
    terminal_->send("\n+0\n" + given);
    ends(status, {" icanon ", " echo "});
  }

  void failEachCall(char flow, const string& command, const string& logon) {
    const string all = "/a /b /c /d /e /f /g /k", given = logon + "1 2 4 5 7\nO\ny\nq\n";
    objects(all);
    if (flow == 'S') catalog("prod", "k");
    zylstore("limits --max-objects-per-txn 3");
    zylstore("calls on");
    const string fresh = dir_.read("store.db");
    const int normal = flow == 'Q' ? 0 : kLeft;
    play(command, given, normal);
    std::set<string> calls;  // of a run without a fault; "DeleteObj 3" is its fourth call
    std::istringstream lines(zylstore("calls show"));
    for (string word, call; lines >> word >> word >> call; std::getline(lines, word)) {
      int number = 0;
      while (!calls.insert(call.substr(3) + " " + std::to_string(number)).second) ++number;
    }
    EXPECT_LT(12u, calls.size());
    for (const auto& [flows, faults, status, told, text, done] : kRows) {
      if (flows.find(flow) == flows.npos) continue;
      dir_.write("store.db", fresh);
      dir_.write("vexoerror.log", "");
      for (const string& fault : faults) zylstore("fault " + fault);
      SCOPED_TRACE(command + ": " + zylstore("fault --list"));
      play(command, given, status == kNormal ? normal : status);
      const string function = faults[0].substr(0, faults[0].find(' ')),
                   words = function + " ended with code " + std::to_string(status) + "; ",
                   sign = told != kNo && text.empty() ? "QRB2692E vlt" + words : "ZYL" + text;
      EXPECT_EQ(told != kNo, logged(sign)) << errorLog();
      EXPECT_EQ(told == kBoth, showed(told == kBoth ? sign : "ZYL"));
      for (const char name : string(flow == 'Q' ? "abdeg" : "")) {
        EXPECT_EQ(done.find(name) < done.npos, showed(string("/oracle/") + name)) << name;
      }
      const std::regex gone("/[0" + (flow == 'Q' ? "" : done) + "] ");
      EXPECT_EQ(std::regex_replace(all, gone, ""), stored());
      EXPECT_EQ("", zylstore("fault --list")) << "a fault that was never reached";
      // Nothing is left of the failure: the work can be done now.
      play(command, logon + "+\nO\ny\nq\n", normal);
      EXPECT_EQ(flow == 'Q' ? all : flow == 'S' ? "/k" : "", stored());
      const std::size_t after = faults[0].find("--after ");
      calls.erase(function + (after == string::npos ? " 0" : faults[0].substr(after + 7)));
    }
    EXPECT_EQ(std::set<string>(), calls) << "have no row";
  }
};

TEST_F(Fault, OfEachCallInAQuery) { failEachCall('Q', "query", ""); }
TEST_F(Fault, OfEachCallInADeletion) { failEachCall('D', "delete", ""); }
TEST_F(Fault, OfEachCallInASynchronization) { failEachCall('S', "syncdb", "rman\nrman\nprod\n"); }

}  // namespace
