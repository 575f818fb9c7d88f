// pick.cpp: the commands of the pick list compared with one walk over the list.
//
// Usage: bench_pick ROUNDS N ...
//
// There is one list of N objects for all rounds. The answers are read from standard input as a
// user's would be, the pages are written to /dev/null, and `system`, which clears the screen, does
// nothing (linked with --wrap). A page is drawn before the measurement, as it always is when a user
// answers.
#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "bench/harness.h"
#include "bench/records.h"
#include "common/nls/nls.h"
#include "common/ut/installdirs.h"
#include "utility/utpick.h"

extern "C" int __wrap_system(const char*) { return 0; }

namespace {

constexpr int kRows = 22, kCols = 79, kPage = 13;
constexpr int kItems = 100;

// Redirects standard output to /dev/null during its lifetime.
class Silence {
 public:
  Silence() : before_(::dup(STDOUT_FILENO)) {
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
  }
  ~Silence() {
    std::fflush(stdout);
    ::dup2(before_, STDOUT_FILENO);
    ::close(before_);
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  int before_;
};

template <typename Work>
double timed(Work work) {
  const double begin = bench::cpuNs();
  work();
  return bench::cpuNs() - begin;
}

// Runs the pick list on a text of answers.
double runPickList(ObjectList* list, const std::string& answers) {
  const int file = ::memfd_create("answers", 0);
  if (::write(file, answers.data(), answers.size()) < 0) std::abort();
  ::lseek(file, 0, SEEK_SET);
  ::dup2(file, STDIN_FILENO);
  ::close(file);
  ::__fpurge(stdin);
  return timed([&] {
    if (pkPickHandler(list) != kPickCancelled) std::abort();
  });
}

class Picks {
 public:
  explicit Picks(std::size_t n) : n_(n) { bench::fillList(&list_, n); }

  void measure(int rounds) {
    const Silence silence;
    drawPage(1);
    for (int round = 0; round < rounds; ++round) {
      if (round % 2 == 0) walkAll();
      pickAll();
      if (round % 2 != 0) walkAll();
      pickRange();
      pickItems(round % 2 == 0);
      drawEnds(round % 2 == 0);
    }
  }

  void print() const {
    bench::printRatio("pick_all", n_, all_, walk_);
    bench::printRatio("pick_range", n_, range_, share_);
    bench::printRatio("pick_items", n_, many_, single_);
    bench::printRatio("page_last", n_, last_, first_);
    const auto cost = [this](const char* series, const bench::Values& values, double per) {
      bench::printCost("pick", series, n_, bench::median(values) / per);
    };
    cost("one walk, an entry", walk_, count());
    cost("+, an entry", all_, count());
    cost("one item", single_, kItems);
    cost("one item of 100", many_, kItems);
    cost("first page", first_, 1);
    cost("last page", last_, 1);
  }

 private:
  double count() const { return static_cast<double>(n_); }

  // A short list is walked more often, or the clock and the page would cost more than the walk.
  std::size_t times() const { return std::max<std::size_t>(4, 200'000 / n_); }

  void walkAll() {
    const double spent = timed([this] {
      for (std::size_t i = 0; i < times(); ++i) {
        for (utZylObj_s* o = list_.getFirst(); o != nullptr; o = list_.getNext(o)) o->selected = 1;
      }
    });
    walk_.push_back(spent / static_cast<double>(times()));
  }

  // The cost of the key "+": the difference from "t", which only draws the page.
  void pickAll() {
    std::string walks, pages;
    for (std::size_t i = 0; i < times(); ++i) {
      walks += "+\n";
      pages += "t\n";
    }
    const double without = runPickList(&list_, pages + "q\n");
    const double with = runPickList(&list_, walks + "q\n");
    all_.push_back((with - without) / static_cast<double>(times()));
  }

  // A tenth of the list, at a random place, compared with a tenth of the last walk.
  void pickRange() {
    const std::size_t length = n_ / 10, from = 1 + random_() % (n_ - length);
    const std::string answer = std::to_string(from) + ":" + std::to_string(from + length - 1) + "+";
    range_.push_back(timed([&] { ProcessAnswer(&list_, answer.c_str(), size()); }));
    share_.push_back(walk_.back() * static_cast<double>(length) / count());
  }

  // A hundred numbers in one answer, and a hundred answers of one number. The numbers differ, so
  // that none of the objects is in a cache.
  void pickItems(bool oneByOneFirst) {
    const auto number = [this] { return std::to_string(1 + random_() % n_); };
    std::string together;
    std::vector<std::string> alone;
    for (int i = 0; i < kItems; ++i) together += number() + " ";
    for (int i = 0; i < kItems; ++i) alone.push_back(number());
    const auto runAlone = [&] {
      single_.push_back(timed([&] {
        for (const std::string& answer : alone) ProcessAnswer(&list_, answer.c_str(), size());
      }));
    };
    if (oneByOneFirst) runAlone();
    many_.push_back(timed([&] { ProcessAnswer(&list_, together.c_str(), size()); }));
    if (!oneByOneFirst) runAlone();
  }

  double drawPage(unsigned top) {
    constexpr int kTimes = 20;
    const utility::PageNotes notes;
    const double spent = timed([&] {
      for (int i = 0; i < kTimes; ++i) {
        DisplayList(&list_, top, kRows, kCols, 0, size(), &notes);
      }
    });
    return spent / kTimes;
  }
  // Both pages are full, so that they are the same amount of work.
  void drawEnds(bool firstFirst) {
    if (firstFirst) first_.push_back(drawPage(1));
    last_.push_back(drawPage(size() - kPage + 1));
    if (!firstFirst) first_.push_back(drawPage(1));
  }

  unsigned size() const { return static_cast<unsigned>(n_); }

  const std::size_t n_;
  ObjectList list_;
  std::mt19937 random_{4711};
  bench::Values walk_, all_, range_, share_, many_, single_, first_, last_;
};

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? static_cast<int>(bench::toNumber(argv[1])) : 5;
  if (newNlsGlobalObject() != 0 ||
      nlinit("vexo.cat", 10, ut::kAgentDir, 10, 1, 1, 1, nullptr, "vexo.cat") != 0) {
    return 1;
  }
  for (int i = 2; i < argc; ++i) {
    Picks picks(bench::toNumber(argv[i]));
    picks.measure(rounds);
    picks.print();
  }
  return 0;
}
