// parser2_test.cpp: the options file, as administrators write it.
#include "agent/parser2.h"

#include "tests/agent/agent_fixture.h"

namespace {

using OptionsFile = Agent;
using std::string_literals::operator""s;
constexpr char kInstalled[] = "installed/agent/vexo.opt";

TEST_F(OptionsFile, TakesValuesAsPeopleWriteThem) {
  using Field = char(orcObj_t::*)[kOptionSize];
  const std::string longest(500, 'x');
  const std::tuple<std::string, Field, std::string> kRows[] = {
      {"vexo_fs   \"/ora fs\"  \n", &orcObj_t::VEXO_FS, "/ora fs"},
      {"  \tVexo_Node\tN x \r\n", &orcObj_t::VEXO_NODE, "N x"},
      {"VEXO_NODE,\"a\"b\"", &orcObj_t::VEXO_NODE, "ab"},
      {"VEXO_NODE a\nvexo_node b\n", &orcObj_t::VEXO_NODE, "b"},
      {"* VEXO_NODE b\n\n  \t \n  *\nVEXO_NODE a\n*", &orcObj_t::VEXO_NODE, "a"},
      {"VEXO_TEST_FLAGS  \"A\" b \n", &orcObj_t::VEXO_TEST_FLAGS, " \"A\" b "},
      {"VEXO_OWNER " + longest + "\n", &orcObj_t::VEXO_OWNER, longest},
      {"VEXO_ENABLESCRIPTINPUT YES\n", &orcObj_t::VEXO_ENABLESCRIPTINPUT, "YES"}};
  for (const auto& [lines, field, value] : kRows) {
    dir.write(kInstalled, lines);
    EXPECT_EQ(0, vexoSetOptions(&orc)) << lines;
    EXPECT_EQ(value, orc.*field) << lines;
    const std::string names = std::string(orc.VEXO_NODE) + orc.VEXO_OWNER;
    EXPECT_EQ(names.empty() ? 1 : 0, orc.noNodeNoOwner) << lines;
  }
}

TEST_F(OptionsFile, StopsAtTheFirstLineInError) {
  const std::tuple<std::string, std::string, std::string> kRows[] = {
      {"VEXO_TRACE x", "QRB2603E", "VEXO_TRACE"},
      {"\"VEXO_NODE\" a", "QRB2603E", "\"VEXO_NODE\""},
      {", ,", "QRB2603E", ": , installed"},
      {"VEXO_NODE", "QRB2616E", "VEXO_NODE"},
      {"VEXO_NODE  \"\" \t", "QRB2616E", "VEXO_NODE"},
      {"vexo_test_flags", "QRB2616E", "VEXO_TEST_FLAGS"},
      {"VEXO_NODE " + std::string(600, 'x'), "QRB2603E", "XXX"}};
  for (const auto& [line, message, part] : kRows) {
    dir.write(kInstalled, "VEXO_FS kept\n" + line + "\nVEXO_LANGUAGE later\n");
    support::Captured shown(STDERR_FILENO);
    EXPECT_EQ(2534, vexoSetOptions(&orc)) << line;
    const std::string text = shown.take();
    for (const std::string& told : {message, part, kInstalled + ""s}) EXPECT_HOLDS(text, told);
    EXPECT_HOLDS(log(), text) << "the log has the same";
    EXPECT_STREQ("kept", orc.VEXO_FS);
    EXPECT_STREQ("", orc.VEXO_LANGUAGE);
  }
}

TEST_F(OptionsFile, LeavesDefaultsWhereItSaysNothing) {
  dir.write(kInstalled, "");
  set(orc.VEXO_NODE, "from the last run");
  EXPECT_EQ(0, vexoSetOptions(&orc));
  const std::string all = std::string(orc.VEXO_AVG_SIZE) + "," + orc.VEXO_NUM_BUFFERS + "," +
                          orc.VLTI_DIR + "," + orc.VLTI_LOG + "," + orc.VLTI_ORC_DIR + "," +
                          orc.VLTI_ORC_CONFIG + "," + orc.VEXO_NODE;
  EXPECT_EQ("50,1,installed/api,installed/agent,installed/agent,installed/agent/vlt.opt,", all);
  EXPECT_STREQ(agent::kDefaultFileSpace, orc.VEXO_FS);
  config.set(std::string(600, 'x').c_str());
  EXPECT_EQ(1702, vexoSetOptions(&orc)) << "a path that does not fit is not cut";
}

TEST_F(OptionsFile, IsFoundThroughTheEnvironment) {
  dir.write(kInstalled, "VEXO_NODE installed");
  dir.write("my.opt", "VEXO_NODE mine");
  support::Captured shown(STDERR_FILENO);
  const std::pair<std::string, const char*> rows[] = {{"", "installed"},
                                                      {"my.opt", "mine"},
                                                      {"'my.opt'", "mine"},
                                                      {"\"my.opt\"", "mine"},
                                                      {std::string(1025, 'x'), "installed"},
                                                      {"'my.opt\"", ""},
                                                      {"''", ""},
                                                      {"installed", ""}};  // a directory
  for (const auto& [variable, node] : rows) {
    optionFile.set(variable.c_str());
    EXPECT_EQ(*node == '\0' ? 2534 : 0, vexoSetOptions(&orc)) << variable;
    EXPECT_STREQ(node, orc.VEXO_NODE) << variable;
  }
  const std::string text = shown.take();
  EXPECT_HOLDS(text, "QRB2615E");
  EXPECT_HOLDS(text, "'my.opt\"");
  EXPECT_HOLDS(text, "installed\n");
}

TEST_F(OptionsFile, FileSpaceGetsItsShape) {
  const std::pair<const char*, const char*> rows[] = {{"", agent::kDefaultFileSpace},
                                                      {"ora", "/ora"},
                                                      {"/ora///", "/ora"},
                                                      {"///", "/"},
                                                      {"//a", "//a"}};
  for (const auto& [given, shaped] : rows) {
    set(orc.VEXO_FS, given);
    vexoCheckFS(&orc);
    EXPECT_STREQ(shaped, orc.VEXO_FS) << given;
  }
}

}  // namespace
