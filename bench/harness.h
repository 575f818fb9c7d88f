// harness.h: how the benchmarks measure and what they print.
//
// A ratio compares two sides in one run. The sides take turns, round by round, and each round gives
// one ratio; the figure is the median of the rounds, its spread the lowest and the highest. If the
// machine slows down for a while, it slows both sides down.
//
// Whatever fills memory runs in a child process (inChild), which starts with an almost empty heap.
// The growth of its resident size is what the measured container holds, whichever allocator the
// memory comes from.
//
// Output, one line for each result, columns separated by tabs; bench/report.awk makes tables of it:
//
//   ratio  KEY    N       MEDIAN  LOWEST  HIGHEST
//   cost   GROUP  SERIES  N       VALUE    (nanoseconds, bytes or seconds for each entry)
#ifndef BENCH_HARNESS_H
#define BENCH_HARNESS_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

// The result of one run of one side, by the name of the figure.
using Figures = std::map<std::string, double>;

// The values of one side, one for each round.
using Values = std::vector<double>;

// Nanoseconds of this process's processor time.
double cpuNs();

// Bytes of this process that are in memory.
double residentBytes();

// Returns freed memory to the system, so that what is allocated next is fresh. Returns
// residentBytes().
double settledMemory();

// Keeps the compiler from removing the computation of `value`.
template <typename T>
void keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

// Runs `side` in a child process and returns its figures. A child that fails ends the program.
Figures inChild(const std::function<Figures()>& side);

struct Side {
  std::string name;
  std::function<Figures()> run;
};

// Runs the sides of one comparison `rounds` times in turn: in their order in one round, in reverse
// in the next.
class Comparison {
 public:
  Comparison(int rounds, const std::vector<Side>& sides);

  // The values of one figure of one side.
  Values values(const std::string& side, const std::string& figure) const;
  // Prints `figure` of `side` over that of `peer`, as `key`.
  void printRatio(const std::string& key, std::size_t n, const std::string& side,
                  const std::string& peer, const std::string& figure) const;
  // Prints the median of `figure` for each side that has it.
  void printCosts(const std::string& group, std::size_t n, const std::string& figure) const;

 private:
  std::vector<std::string> names_;
  std::map<std::string, std::vector<Figures>> runs_;
};

double median(Values values);

// `side` and `peer` have one value for each round.
void printRatio(const std::string& key, std::size_t n, const Values& side, const Values& peer);
void printCost(const std::string& group, const std::string& series, std::size_t n, double value);

// The number that an argument consists of, at least 1; anything else ends the program.
std::size_t toNumber(const char* text);

}  // namespace bench

#endif  // BENCH_HARNESS_H
