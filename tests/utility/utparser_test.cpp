// utparser_test.cpp: the results and values of command lines.
#include "utility/utparser.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/captured.h"
#include "tests/utility/messages.h"

namespace {

struct Parsed {
  unsigned short rc;
  vexoCommandsInfo_t commands = {};
  vexoOptionsInfo_t options = {};
  std::string arguments;  // what the parser left of the words after the command
};

class CommandLine : public WithMessages {
 protected:
  static Parsed parse(const std::string& line) {
    std::istringstream in("vexosync " + line);
    std::vector<std::string> words{std::istream_iterator<std::string>(in), {}};
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    Parsed result = {};
    result.rc = vexoParseCmdLine(static_cast<int>(words.size()), pointers.data(), &result.commands,
                                 &result.options);
    for (std::size_t i = 2; i < words.size() && i < 4; ++i) result.arguments += words[i];
    return result;
  }
};

TEST_F(CommandLine, GivesAResultForEveryLine) {
  const struct {
    const char* line;
    unsigned short rc;
    const char* refused = "";
  } rows[] = {
      {"q", 0},
      {"syn", 1},
      {"pass", 1},
      {"sync -numcat=3", 0},
      {"sync -numcat=10", 14, "-numcat=10"},
      {"sync -numcat=2147483648", 14, "-numcat=2147483648"},
      {"sync -numcat=4294967297", 14, "-numcat=4294967297"},
      {"sync -numcat=99999999999999999999", 14, "-numcat=99999999999999999999"},
      {"sync -numcat=", 13, "-numcat="},
      {"sync -numcat=2 -nocat -bad", 4, "-nocat"},
      {"sync -nocat=whatever -numorcinst=2", 0},
      {"sync -numorcinst=2 -numcat=2", 4, "-numcat=2"},
      {"sync -numcat=2 -numorcinst=2", 4, "-numorcinst=2"},
      {"password -vexo_optfile=a.opt abc xyz", 13, "(not shown)"},
      {"password abc xyz -vexo_optfile=a.opt", 0},
  };
  for (const auto& row : rows) {
    const Parsed parsed = parse(row.line);
    EXPECT_EQ(row.rc, parsed.rc) << row.line;
    EXPECT_STREQ(row.refused, parsed.options.refused) << row.line;
    EXPECT_TRUE(row.rc == 0 || parsed.commands.help == 1) << row.line;
  }
}

TEST_F(CommandLine, KeepsValuesAsTheyWereWritten) {
  EXPECT_STREQ("/a/B=c.opt", parse("query -vexo_opt=/a/B=c.opt").options.optFile);
  const vexoOptionsInfo_t two = parse("sync -nocat -numorcinst=25").options;
  EXPECT_TRUE(two.numOrcInstances == 25 && two.noCatalog == 1);
  EXPECT_EQ(1999999999, parse("sync -numcat=1999999999").options.numCatalogs);
}

// The result, and what is said of it; "D" is the command and "-o" the option that was refused.
TEST_F(CommandLine, HasAMessageForEveryResult) {
  for (const auto& [result, begin, end] :
       {std::tuple(7, "\nQRB0102E ", "\nD\n\n"),
        {13, "\nQRB0105E The option -o ", ".\n\n"},
        {610, "\nQRB2690E ", "(code 610). Install it again.\n\n"},
        {1702, "\nQRB2690E ", "(code 1702). Install it again.\n\n"}}) {
    support::Captured output;
    vexoPrintError(static_cast<unsigned short>(result), "D", "-o");
    const std::string shown = output.take();
    EXPECT_TRUE(shown.starts_with(begin) && shown.ends_with(end)) << shown;
    const std::string problem = utility::startProblem(static_cast<unsigned short>(result));
    EXPECT_EQ(result > 14, problem.find("rc = " + std::to_string(result) + "\n") != problem.npos);
    EXPECT_EQ(result <= 14, problem.empty());
  }
}

// They are parsed as options first, which upper-cases them and cuts them at "=". Kept on purpose.
TEST_F(CommandLine, TakesPasswordsAsTheTrialAsOptionsLeavesThem) {
  const Parsed parsed = parse("password abc=d xyz");
  EXPECT_STREQ("ABC", parsed.options.oldPassword);
  EXPECT_STREQ("XYZ", parsed.options.newPassword);
  const Parsed cut = parse("password " + std::string(99, 'x') + " b");
  EXPECT_EQ(std::string(64, 'X'), cut.options.oldPassword);
}

// Every user can read the arguments of a process.
TEST_F(CommandLine, LeavesNoPasswordInTheArguments) {
  for (const auto& [line, wiped] : {std::pair("password abc=d xyz", true),
                                    {"password abc xyz -vexo_opt=f", true},
                                    {"password abc -vexo_opt=f", false},
                                    {"sync abc xyz", false}}) {
    const std::string left = parse(line).arguments;
    EXPECT_EQ(wiped, left.find_first_not_of('\0') == std::string::npos) << line << ": " << left;
  }
}

}  // namespace
