// parser2_test.cpp: the options file, as administrators write it.
#include "agent/parser2.h"

#include "tests/agent/agent_fixture.h"

namespace {

using std::pair, std::string, std::tuple, std::string_literals::operator""s;
using OptionsFile = Agent;
constexpr char kInstalled[] = "installed/agent/vexo.opt";

TEST_F(OptionsFile, TakesValuesAsPeopleWriteThem) {
  const string longest(500, 'x');
  for (const auto& [lines, field, value] :
       {tuple("vexo_fs   \"/ora fs\"  \n"s, &orcObj_t::VEXO_FS, "/ora fs"s),
        {"VEXO_FS ora//", &orcObj_t::VEXO_FS, "/ora"},
        {"VEXO_FS ///", &orcObj_t::VEXO_FS, "/"},
        {"VEXO_FS //a", &orcObj_t::VEXO_FS, "//a"},
        {"  \tVexo_Node\tN x \r\n", &orcObj_t::VEXO_NODE, "N x"},
        {"VEXO_NODE,\"a\"b\"", &orcObj_t::VEXO_NODE, "ab"},
        {"VEXO_NODE a\nvexo_node b\n", &orcObj_t::VEXO_NODE, "b"},
        {"* VEXO_NODE b\n\n  \t \n  *\nVEXO_NODE a\n*", &orcObj_t::VEXO_NODE, "a"},
        {"VEXO_TEST_FLAGS  \"A\" b \n", &orcObj_t::VEXO_TEST_FLAGS, " \"A\" b "},
        {"VEXO_OWNER " + longest + "\n", &orcObj_t::VEXO_OWNER, longest},
        {"VEXO_ENABLESCRIPTINPUT YES\n", &orcObj_t::VEXO_ENABLESCRIPTINPUT, "YES"}}) {
    dir.write(kInstalled, lines);
    EXPECT_EQ(0, vexoSetOptions(&orc)) << lines;
    EXPECT_EQ(value, orc.*field) << lines;
    EXPECT_EQ(*orc.VEXO_NODE + *orc.VEXO_OWNER == 0 ? 1 : 0, orc.noNodeNoOwner) << lines;
  }
}

TEST_F(OptionsFile, StopsAtTheFirstLineInError) {
  for (const auto& [line, message, part] : {tuple("VEXO_TRACE x"s, "QRB2603E"s, "VEXO_TRACE"s),
                                            {", ,", "QRB2603E", ": , installed"},
                                            {"VEXO_NODE", "QRB2616E", "VEXO_NODE"},
                                            {"VEXO_NODE  \"\" \t", "QRB2616E", "VEXO_NODE"},
                                            {"VEXO_NODE " + string(600, 'x'), "QRB2603E", "XXX"}}) {
    dir.write(kInstalled, "VEXO_FS kept\n" + line + "\nVEXO_LANGUAGE later\n");
    support::Captured shown(STDERR_FILENO);
    EXPECT_EQ(2534, vexoSetOptions(&orc)) << line;
    const string text = shown.take();
    for (const string& told : {message, part, kInstalled + ""s}) EXPECT_HOLDS(text, told);
    EXPECT_HOLDS(log(), text) << "the log has the same";
    EXPECT_EQ("kept, no language", orc.VEXO_FS + ", no language"s + orc.VEXO_LANGUAGE);
  }
}

TEST_F(OptionsFile, LeavesDefaultsWhereItSaysNothing) {
  dir.write(kInstalled, "");
  EXPECT_EQ(0, vexoSetOptions(&orc));
  *orc.VEXO_FS = '\0';
  vexoCheckFS(&orc);
  EXPECT_EQ("50,1,installed/api,installed/agent,installed/agent,installed/agent/vlt.opt/marlorc",
            orc.VEXO_AVG_SIZE + ","s + orc.VEXO_NUM_BUFFERS + "," + orc.VLTI_DIR + "," +
                orc.VLTI_LOG + "," + orc.VLTI_ORC_DIR + "," + orc.VLTI_ORC_CONFIG + orc.VEXO_FS);
  config.set(string(600, 'x').c_str());
  EXPECT_EQ(1702, vexoSetOptions(&orc)) << "a path that does not fit is not cut";
}

TEST_F(OptionsFile, IsFoundThroughTheEnvironment) {
  dir.write(kInstalled, "VEXO_NODE installed");
  dir.write("my.opt", "VEXO_NODE mine");
  support::Captured shown(STDERR_FILENO);
  const string tooLong(1025, 'x');
  // The variable, and the node that was read; the last file is a directory.
  const pair<string, const char*> rows[] = {
      {"", "installed"},      {"my.opt", "mine"}, {"'my.opt'", "mine"}, {"\"my.opt\"", "mine"},
      {tooLong, "installed"}, {"'my.opt\"", ""},  {"''", ""},           {"'", ""},
      {"installed", ""}};
  for (const auto& [variable, node] : rows) {
    optionFile.set(variable.c_str());
    EXPECT_EQ(*node == '\0' ? 2534 : 0, vexoSetOptions(&orc)) << variable;
    EXPECT_STREQ(node, orc.VEXO_NODE) << variable;
  }
  const string text = shown.take();
  for (const char* part : {": 'my.opt\"\nQRB2615E", ": installed\n"}) EXPECT_HOLDS(text, part);
}

}  // namespace
