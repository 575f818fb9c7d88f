// progress_test.cpp: the line on the terminal that shows the progress of a long stage.
#include "tests/flows/site.h"

namespace {

class Progress : public Site {};

TEST_F(Progress, IsShownOnATerminalOnlyAndNeverOnStandardOutput) {
  option("VEXO_ENABLESCRIPTINPUT y");
  for (int i = 0; i < 40; ++i) objects("/piece" + std::to_string(i));
  zylstore("limits --latency 35");
  dir_.write("answers", "\n+0\n");
  const auto start = std::chrono::steady_clock::now();
  run("vexosync query <answers >seen");
  ends(0, {"Listing backup objects: "});
  const auto tenths = (std::chrono::steady_clock::now() - start) / std::chrono::milliseconds(100);
  EXPECT_FALSE(showed("objects: 18,446")) << "counted down";
  EXPECT_GE(tenths - 9, count("Listing")) << "after a second, ten times a second";
  // A single line, and erased in the end.
  EXPECT_TRUE(std::regex_match(terminal_->transcript(), std::regex("[^\n]*\r *\r")));
  run("vexosync query <answers >unseen 2>errors");
  ends(0);
  EXPECT_EQ("", terminal_->transcript() + dir_.read("errors"));
  EXPECT_EQ(dir_.read("unseen"), dir_.read("seen"));
  // Writes a spool file as sqlplus does, but slowly.
  replaceSqlplus(
      "#!/bin/sh\nspool=$(sed -n '2s/^spool //p' \"${2#@}\")\n"
      "for i in 1 2 3; do echo piece$i; sleep 0.7; done >\"$spool\"\necho Disconnected\n");
  dir_.write("answers", "\n+0\nrman\nrman\nprod\n+\no\ny\nq\n");
  run("vexosync syncdb <answers");
  for (const char* stage : {"\nCatalog 1: 2 lines received (", "\rListing backup objects: ",
                            "\rDeleting backup objects: ", " of 37 ("}) {
    see(stage);
  }
  ends(300);
  EXPECT_EQ("/piece1 /piece2 /piece3", stored());
}

}  // namespace
