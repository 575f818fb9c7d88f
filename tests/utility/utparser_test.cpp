// utparser_test.cpp: the results and values of command lines.
#include "utility/utparser.h"

#include <algorithm>

#include "tests/utility/messages.h"

namespace {

using std::string, std::tuple, std::pair;

class CommandLine : public WithMessages {
 protected:
  int parse(const string& line) {
    std::istringstream in("vexosync " + line);
    string words[6];
    char* arguments[6];
    int count = 0;
    for (; in >> words[count]; ++count) arguments[count] = words[count].data();
    commands_ = {};
    options_ = {};
    const int rc = vexoParseCmdLine(count, arguments, &commands_, &options_);
    left_ = words[2] + words[3];
    return rc;
  }

  // Tries each beginning of a word, and the word with a letter too many. Its capitals are the
  // shortest form; a value may follow it.
  void expectForms(const string& before, const string& text, int otherwise) {
    const string word = text.substr(0, text.find('=')), value = text.substr(word.size());
    const auto shortest = std::ranges::count_if(word, [](char c) { return c < 'a'; });
    for (std::size_t length = 1; length <= word.size() + 1; ++length) {
      const string form = (word + "x").substr(0, length);
      const bool fits = static_cast<long>(length) >= shortest && length <= word.size();
      EXPECT_EQ(fits ? 0 : otherwise, parse(before + form + value)) << form;
    }
  }

  vexoCommandsInfo_t commands_;
  vexoOptionsInfo_t options_;
  string left_;  // what the parser left of the words after the command
};

// Each command, its flag, and which of the options it takes.
TEST_F(CommandLine, TakesEachWordFromItsShortestFormOnAndEachOptionWhereItBelongs) {
  using Info = vexoCommandsInfo_t;
  const string options[] = {"-VEXO_OPTfile=f", "-OUTfile=f", "-NUMCATalogs=2", "-NOCATalog",
                            "-NUMORCINSTances=2"};
  const tuple<string, decltype(&Info::help), const char*> commands[] = {
      {"PASSWord", &Info::password, "+----"}, {"SHOWENVironment", &Info::showEnvironment, "++---"},
      {"SYNCdb", &Info::syncdb, "+-+++"},     {"SHOWCLIOPtions", &Info::showCliOptions, "++---"},
      {"DELETE", &Info::deleteObj, "+----"},  {"SHOWSESSOPtions", &Info::showSessOptions, "++---"},
      {"Query", &Info::query, "+----"},       {"SHOWSESSINFO", &Info::showSessInfo, "++---"},
      {"HELP", &Info::help, "-----"},         {"SHOWVERsions", &Info::showVersions, "++---"},
  };
  for (const auto& [command, flag, takes] : commands) {
    expectForms("", command, 1);
    EXPECT_TRUE(parse(command) == 0 && commands_.*flag == 1) << command;
    for (const char* taken = takes; const string& option : options) {
      EXPECT_EQ(*taken++ == '+' ? 0 : 4, parse(command + " " + option)) << command << option;
    }
  }
  for (const string& text : options) expectForms(text[1] == 'O' ? "showver " : "sync ", text, 4);
}

// A line, its result, and as much as is kept of the argument that is refused.
TEST_F(CommandLine, GivesAResultForEveryLine) {
  const string cat = "-numcat=1", orc = "-numorcinst=1", big = "-numcat=2147483648";
  const string file = "-vexo_opt=" + string(1024, 'x'), huge = "-numcat=99999999999999999999";
  const tuple<string, int, string> rows[] = {
      {"sync -numcat=10", 14, "-numcat=10"},  {"sync -numcat=1 -nocat -bad", 4, "-nocat"},
      {"sync -numcat=", 13, "-numcat="},      {"sync " + big, 14, big},
      {"sync " + orc + " " + cat, 4, cat},    {"passw -vexo_opt=f a b", 13, "(not shown)"},
      {"sync " + cat + " " + orc, 4, orc},    {"q " + file + "x", 4, file.substr(0, 255)},
      {"sync -nocatalog " + cat, 4, cat},     {"q " + file, 0, ""},
      {"passw a b -bad", 4, "(not shown)"},   {"synx", 1, ""},
      {"passw a b -vexo_opt=f", 0, ""},       {"", 12, ""},
      {"sync -nocat=whatever " + orc, 0, ""}, {"sync " + huge, 14, huge},
  };
  for (const auto& [line, rc, refused] : rows) {
    EXPECT_EQ(rc, parse(line)) << line;
    EXPECT_EQ(tuple(refused, rc != 0), tuple(options_.refused, commands_.help == 1)) << line;
  }
  EXPECT_TRUE(parse("query -vexo_opt=/a/B=c.opt") == 0 && options_.optFile == string("/a/B=c.opt"));
  EXPECT_TRUE(parse("showver -out=o") == 0 && options_.outFile == string("o"));
  EXPECT_EQ(0, parse("sync -nocat -numorcinst=1999999999"));
  EXPECT_EQ(tuple(1999999999, 1), tuple(options_.numOrcInstances, options_.noCatalog));
  EXPECT_TRUE(parse("sync -numcat=25") == 0 && options_.numCatalogs == 25);
}

// The result, and what is said of it; "D" is the command and "-o" the option that was refused.
TEST_F(CommandLine, HasAMessageForEveryResult) {
  for (const auto& [result, begin, end] :
       {tuple(7, "\nQRB0102E ", "\nD\n\n"),
        {4, "\nQRB0103E The option -o ", "\nD\n\n"},
        {12, "\nQRB0100E ", ".\n\n"},
        {13, "\nQRB0105E The option -o ", ".\n\n"},
        {610, "\nQRB2690E ", "(code 610). Install it again.\n\n"},
        {1702, "\nQRB2690E ", "(code 1702). Install it again.\n\n"}}) {
    support::Captured output;
    vexoPrintError(static_cast<unsigned short>(result), "D", "-o");
    const string shown = output.take();
    EXPECT_TRUE(shown.starts_with(begin) && shown.ends_with(end)) << shown;
    const string problem = utility::startProblem(static_cast<unsigned short>(result));
    EXPECT_EQ(result > 14, problem.find("rc = " + std::to_string(result) + "\n") != problem.npos);
    EXPECT_EQ(result <= 14, problem.empty());
  }
}

// They are parsed as options first, which upper-cases them and cuts them at "=". Kept on purpose.
TEST_F(CommandLine, TakesPasswordsAsTheTrialAsOptionsLeavesThem) {
  EXPECT_EQ(0, parse("password " + string(99, 'x') + " b=c"));
  EXPECT_EQ(string(64, 'X'), options_.oldPassword);
  EXPECT_STREQ("B", options_.newPassword);
}

// Every user can read the arguments of a process.
TEST_F(CommandLine, LeavesNoPasswordInTheArguments) {
  for (const auto& [line, wiped] : {std::pair("passw a=b c", true),
                                    {"passw a c -vexo_opt=f", true},
                                    {"passw a -vexo_opt=f", false}}) {
    EXPECT_EQ(wiped ? 0 : 4, parse(line)) << line;
    EXPECT_EQ(wiped, left_.find_first_not_of('\0') == left_.npos) << line << ": " << left_;
  }
}

}  // namespace
