// doubts_test.cpp: which dates and which matches are doubted.
#include "utility/doubts.h"

#include "tests/utility/messages.h"

namespace {

using Doubts = WithErrorLog;

// The numbers of the doubts, without the rest of their texts.
std::string numbers(const utility::RunRecord& run) {
  std::string all;
  for (const std::string& doubt : run.doubts) all += doubt.substr(3, 5) + " ";
  return all;
}

TEST_F(Doubts, OfTheDatesArise) {
  // Days from today; no catalog, the end date was shown.
  const std::tuple<long, long, bool, bool, const char*> rows[] = {
      {-400, -1, false, false, ""},      {-7, -1, true, false, ""},
      {-8, -1, true, false, "2664W "},   {-8, 0, false, false, "2665W "},
      {-8, 300, false, false, "2665W "}, {-8, 0, true, false, "2665W 2664W "},
      {-8, 0, false, true, "2612W "},
  };
  const nfDate today = ut::localNow();
  for (const auto& [start, end, noCatalog, endDateShown, doubts] : rows) {
    utility::RunRecord run(utility::ListKind::kOrphans);
    support::Captured output;
    doubtDates(ut::addDays(today, start), ut::addDays(today, end), noCatalog, endDateShown, &run);
    EXPECT_EQ(doubts, numbers(run)) << start << " " << end;
    // The default end date's own message has been shown already.
    EXPECT_EQ(endDateShown, output.take().empty() && !run.doubts.empty()) << doubts;
  }
}

TEST_F(Doubts, OfTheMatchesArise) {
  // Handles; longest, objects, known, foreign known and offered, cut off; letters were lost.
  const std::tuple<std::uint64_t, utility::RangeCounts, bool, const char*> rows[] = {
      {9, {5, 9, 0, 0, 9, 9}, true, "2661W "}, {9, {5, 9, 1, 0, 1, 2}, false, "2662W 2663W "},
      {9, {5, 0, 0, 0, 0, 0}, true, ""},       {9, {5, 9, 1, 1, 1, 0}, true, "2663W "},
      {0, {0, 9, 0, 0, 9, 0}, true, ""},       {9, {5, 9, 1, 1, 1, 0}, false, ""},
      {9, {5, 9, 1, 0, 0, 0}, true, ""},
  };
  for (const auto& [handles, counts, lettersLost, doubts] : rows) {
    utility::RunRecord run(utility::ListKind::kOrphans);
    run.handles = handles;
    const support::Captured output;
    utility::doubtMatches(counts, lettersLost, &run);
    EXPECT_EQ(doubts, numbers(run)) << counts.known << " " << lettersLost;
  }
}

}  // namespace
