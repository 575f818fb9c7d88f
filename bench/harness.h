// harness.h: how the benchmarks measure and what they print.
//
// A ratio compares two sides within one run. The sides take turns, round by round, and each round
// gives one ratio; the median of the rounds is the figure, the lowest and the highest are its
// spread. So a machine that slows down for a while slows both sides down.
//
// What fills memory runs in a child process of its own (inChild): it starts without a heap to
// speak of, and the growth of its resident size is what the thing measured holds, whoever hands
// the memory out.
//
// Output, a line each, columns separated by tabs; bench/report.awk makes tables of it:
//
//   ratio  KEY    N       MEDIAN  LOWEST  HIGHEST
//   cost   GROUP  SERIES  N       VALUE                (nanoseconds, bytes or seconds for each
//   entry)
#ifndef BENCH_HARNESS_H
#define BENCH_HARNESS_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

// What one run of one side gave, by the figure's name.
using Figures = std::map<std::string, double>;

// One side's runs, a value each round.
using Values = std::vector<double>;

// Nanoseconds of this process's processor time.
double cpuNs();

// Bytes of this process that are in memory.
double residentBytes();

// Gives freed memory back, so that what is taken next is fresh. Returns residentBytes().
double settledMemory();

// Keeps the compiler from leaving out what computes `value`.
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

// The sides of one comparison, `rounds` times in turns: forwards in one round, backwards in the
// next.
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

// One value a round and side.
void printRatio(const std::string& key, std::size_t n, const Values& side, const Values& peer);
void printCost(const std::string& group, const std::string& series, std::size_t n, double value);

// "1000000" and so on.
std::size_t toNumber(const char* text);

}  // namespace bench

#endif  // BENCH_HARNESS_H
