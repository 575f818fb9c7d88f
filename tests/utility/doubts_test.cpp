// doubts_test.cpp: which dates and which matches are doubted.
#include "utility/doubts.h"

#include "tests/support/captured.h"
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
  const struct {
    long start, end;  // days from today
    bool noCatalog, endDateShown;
    const char* doubts;
  } rows[] = {
      {-400, -1, false, false, ""},      {-7, -1, true, false, ""},
      {-8, -1, true, false, "2664W "},   {-8, 0, false, false, "2665W "},
      {-8, 300, false, false, "2665W "}, {-8, 0, true, false, "2665W 2664W "},
      {-8, 0, false, true, "2612W "},
  };
  const nfDate today = ut::localNow();
  for (const auto& row : rows) {
    utility::RunRecord run(utility::ListKind::kOrphans);
    support::Captured output;
    utility::doubtDates(ut::addDays(today, row.start), ut::addDays(today, row.end), row.noCatalog,
                        row.endDateShown, &run);
    EXPECT_EQ(row.doubts, numbers(run)) << row.start << " " << row.end;
    // The default end date's own message has been shown already.
    EXPECT_EQ(row.endDateShown, output.take().empty() && !run.doubts.empty()) << row.doubts;
  }
}

TEST_F(Doubts, OfTheMatchesArise) {
  const struct {
    std::uint64_t handles;
    utility::RangeCounts counts;  // longest, objects, known, foreign known and offered, cut off
    bool lettersLost;
    const char* doubts;
  } rows[] = {
      {9, {5, 0, 0, 0, 0, 0}, true, ""},
      {0, {0, 9, 0, 0, 9, 0}, true, ""},
      {9, {5, 9, 0, 0, 9, 9}, true, "2661W "},
      {9, {5, 9, 1, 0, 0, 0}, true, ""},
      {9, {5, 9, 1, 0, 1, 2}, false, "2662W 2663W "},
      {9, {5, 9, 1, 1, 1, 0}, false, ""},
      {9, {5, 9, 1, 1, 1, 0}, true, "2663W "},
  };
  for (const auto& row : rows) {
    utility::RunRecord run(utility::ListKind::kOrphans);
    run.handles = row.handles;
    const support::Captured output;
    utility::doubtMatches(row.counts, row.lettersLost, &run);
    EXPECT_EQ(row.doubts, numbers(run)) << row.counts.known << " " << row.lettersLost;
  }
}

}  // namespace
