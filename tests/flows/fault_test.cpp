// fault_test.cpp: every call of the client library that a flow makes fails once, in every flow.
//
// There are seven objects a to g, and k, which the catalog knows; a, b, d, e and g are picked. A
// transaction may hold three objects, so two are deleted in each: (a b) (d e) (g).
#include <cstring>
#include <map>
#include <set>

#include "tests/flows/site.h"

namespace {

constexpr int kLeft = 300;      // the code of a pick list that was left
constexpr int kNormal = -1000;  // the status of a run without a fault

// Where the library's text for a failure is shown.
enum Told { kNo, kLog, kBoth };  // both: in the log and on the terminal

struct Row {
  std::string flows;                // initials of QUERY, DELETE, SYNCDB
  std::vector<std::string> faults;  // as zylstore takes them; the row is about the first one
  int status;
  Told told;
  const char* text;  // the number in the library's text; if it has none, the function and its code
  const char* done;  // the picked objects that were deleted; for QUERY, those that were shown
};

const Row kRows[] = {
    {"QDS", {"SetUp 2409"}, 2409, kBoth, "2409", ""},
    {"QDS", {"InitEx 51"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsgEx 2405"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsg 2405 --times 2"}, 51, kBoth, "0051", ""},
    {"QDS", {"InitEx 51", "RCMsg 2405 --times 2", "RCMsgEx 2405"}, 51, kBoth, "vltInitEx 51", ""},
    {"QDS", {"InitEx -50 --times 4"}, kNormal, kNo, "0050", "abdeg"},  // tried five times
    {"QDS", {"InitEx -50 --times 5"}, -50, kBoth, "0050", ""},
    {"QDS", {"QuerySessOptions 2403"}, 2403, kBoth, "2403", ""},
    {"QDS", {"QuerySessInfo 53"}, 53, kBoth, "0053", ""},
    {"QDS", {"QuerySessInfo 53 --after 1"}, 53, kLog, "0053", ""},
    {"QDS", {"BeginQuery 2410"}, 2410, kBoth, "2410", ""},
    // The query is cut short: what was listed before is offered.
    {"QD", {"GetNextQObj 2410"}, kNormal, kNo, "2410", ""},
    {"S", {"GetNextQObj 2410"}, 65535, kNo, "2410", ""},
    {"QD", {"GetNextQObj 2"}, kNormal, kLog, "0000", ""},  // kept on purpose: code 0 in the log
    {"S", {"GetNextQObj 2"}, 65535, kLog, "0000", ""},
    {"QDS", {"GetNextQObj 2410 --after 1"}, kNormal, kNo, "2410", "a"},
    {"QDS", {"GetNextQObj -50 --after 2"}, kNormal, kNo, "0050", "ab"},
    {"QDS", {"GetNextQObj 2410 --after 3"}, kNormal, kNo, "2410", "ab"},
    {"QDS", {"GetNextQObj 54 --after 4"}, kNormal, kNo, "0054", "abd"},
    {"QDS", {"GetNextQObj 2302 --after 5"}, kNormal, kNo, "2302", "abde"},
    {"QDS", {"GetNextQObj 122 --after 5"}, kNormal, kNo, "0122", "abdeg"},  // the query continues
    {"QDS", {"GetNextQObj 121 --after 6"}, kNormal, kNo, "0121", "abde"},
    {"QDS", {"GetNextQObj 2410 --after 7"}, kNormal, kNo, "2410", "abdeg"},
    {"QDS", {"GetNextQObj 2410 --after 8"}, kNormal, kNo, "2410", "abdeg"},
    {"QDS", {"EndQuery 2404"}, kNormal, kNo, "2404", "abdeg"},
    {"DS", {"BeginTxn 2404"}, 2404, kBoth, "2404", ""},
    {"DS", {"BeginTxn 2404 --after 1"}, 2404, kLog, "2404", "ab"},
    {"DS", {"BeginTxn 2410 --after 2"}, 2410, kLog, "2410", "abde"},
    {"DS", {"DeleteObj 54"}, 54, kBoth, "0054", ""},
    {"DS", {"DeleteObj 54", "RCMsg 2405"}, 54, kBoth, "vltDeleteObj 54", ""},
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
    {"QDS", {"Terminate 2402"}, kNormal, kNo, "2402", "abdeg"},
    {"QDS", {"CleanUp 2401"}, kNormal, kNo, "2401", "abdeg"},
};

class Fault : public Site {
 protected:
  // Runs `command` with all answers typed ahead; then the shell shows the terminal's settings.
  void play(const std::string& command, const std::string& answers, int status) {
    shell("vexosync " + command + "; s=$?; stty -a; exit $s");
    terminal_->send("\n+0\n" + answers);
    ends(status);
    EXPECT_TRUE(showed(" icanon ") && showed(" echo ")) << terminal_->transcript();
  }

  static std::string signOf(const std::string& text) {
    const std::size_t blank = text.find(' ');
    if (blank == text.npos) return "ZYL" + text;
    return "QRB2692E " + text.substr(0, blank) + " ended with code" + text.substr(blank) + "; ";
  }

  // Every call of a run without a fault has a row.
  static void expectRowsForAllCalls(char flow, const std::string& faultless) {
    std::set<std::string> covered;  // "DeleteObj 3" is its fourth call
    for (const Row& row : kRows) {
      if (row.flows.find(flow) == std::string::npos) continue;
      const std::string& fault = row.faults.front();
      const std::size_t after = fault.find("--after ");
      covered.insert(fault.substr(0, fault.find(' ')) +
                     (after == fault.npos ? " 0" : fault.substr(after + 7)));
    }
    std::map<std::string, int> calls;
    std::istringstream lines(faultless);
    for (std::string number, process, operation; lines >> number >> process >> operation;) {
      operation.erase(0, 3);  // "vlt"
      const std::string call = operation + " " + std::to_string(calls[operation]++);
      EXPECT_TRUE(covered.contains(call)) << call << " has no row";
      std::getline(lines, process);
    }
  }

  void failEachCall(char flow, const std::string& command, const std::string& logon) {
    objects({"/a", "/b", "/c", "/d", "/e", "/f", "/g", "/k"});
    if (flow == 'S') catalog("prod", {"k"});
    zylstore("limits --max-objects-per-txn 3");
    zylstore("calls on");
    const std::string fresh = dir_.read("store.db");
    const int normal = flow == 'Q' ? 0 : kLeft;
    const std::string answers = logon + "1 2 4 5 7\nO\ny\nq\n";
    play(command, answers, normal);
    expectRowsForAllCalls(flow, zylstore("calls show"));
    for (const Row& row : kRows) {
      if (row.flows.find(flow) == std::string::npos) continue;
      dir_.write("store.db", fresh);
      dir_.write("vexoerror.log", "");
      std::string what;
      for (const std::string& fault : row.faults) {
        zylstore("fault " + fault);
        what += fault + "; ";
      }
      SCOPED_TRACE(command + ": " + what);
      play(command, answers, row.status == kNormal ? normal : row.status);
      const std::string sign = row.told == kNo ? "ZYL" : signOf(row.text);
      EXPECT_EQ(row.told != kNo, logged(sign)) << errorLog();
      EXPECT_EQ(row.told == kBoth, showed(row.told == kBoth ? sign : "ZYL"));
      std::string left;
      for (const char name : std::string("abcdefgk")) {
        const bool done = std::strchr(row.done, name) != nullptr;
        if (flow == 'Q' && std::strchr("abdeg", name) != nullptr) {
          EXPECT_EQ(done, showed(std::string("/oracle/") + name)) << name;
        }
        if (flow == 'Q' || !done) left += std::string(left.empty() ? "/" : " /") + name;
      }
      EXPECT_EQ(left, stored());
      EXPECT_EQ("", zylstore("fault --list")) << "a fault that was never reached";
      // Nothing is left of the failure: the work can be done now.
      play(command, logon + "+\nO\ny\nq\n", normal);
      EXPECT_EQ(flow == 'Q' ? left : flow == 'S' ? "/k" : "", stored());
    }
  }
};

TEST_F(Fault, OfEachCallInAQuery) { failEachCall('Q', "query", ""); }
TEST_F(Fault, OfEachCallInADeletion) { failEachCall('D', "delete", ""); }
TEST_F(Fault, OfEachCallInASynchronization) { failEachCall('S', "syncdb", "rman\nrman\nprod\n"); }

}  // namespace
