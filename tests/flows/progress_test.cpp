// progress_test.cpp: the line on the terminal that shows the progress of a long stage.
#include <chrono>

#include "tests/flows/site.h"

namespace {

class Progress : public Site {
 protected:
  Progress() {
    option("VEXO_ENABLESCRIPTINPUT y");
    for (int i = 0; i < 40; ++i) object("/piece" + std::to_string(i));
    zylstore("limits --latency 35");
  }
  // Runs a shell command on a terminal and returns what was shown there.
  std::string shown(const std::string& command) {
    shell(command);
    EXPECT_TRUE(terminal_->wait(std::chrono::seconds(30)));
    return terminal_->transcript();
  }
};

TEST_F(Progress, IsShownOnATerminalOnlyAndNeverOnStandardOutput) {
  dir_.write("answers", "\n+0\n");
  const auto begin = std::chrono::steady_clock::now();
  const std::string line = shown("vexosync query <answers >seen");
  const auto tenths = (std::chrono::steady_clock::now() - begin) / std::chrono::milliseconds(100);
  EXPECT_TRUE(showed("Listing backup objects: ")) << line;
  EXPECT_GE(tenths - 9, count("Listing")) << "after a second, ten times a second";
  EXPECT_EQ(std::string::npos, line.find('\n'));
  const std::size_t last = line.rfind("\r", line.size() - 2);
  EXPECT_EQ(std::string::npos, line.find_first_not_of(" \r", last)) << "not erased: " << line;
  EXPECT_EQ("", shown("vexosync query <answers >unseen 2>errors") + dir_.read("errors"));
  EXPECT_EQ(dir_.read("unseen"), dir_.read("seen"));
}

TEST_F(Progress, IsShownInEveryStage) {
  // Writes a spool file as sqlplus does, but slowly.
  replaceSqlplus(
      "#!/bin/sh\nspool=$(sed -n '2s/^spool //p' \"${2#@}\")\n"
      "for i in 1 2 3; do echo piece$i; sleep 0.7; done >\"$spool\"\necho Disconnected\n");
  dir_.write("answers", "\n+0\nrman\nrman\nprod\n+\no\ny\nq\n");
  std::string text = shown("vexosync syncdb <answers");
  for (const char* stage : {"\nCatalog 1: 2 lines received (", "\rListing backup objects: ",
                            "\rDeleting backup objects: ", " of 37 ("}) {
    ASSERT_NE(text.npos, text.find(stage)) << stage << "\n" << text;
    text.erase(0, text.find(stage));
  }
  EXPECT_EQ("/piece1 /piece2 /piece3", stored());
}

}  // namespace
