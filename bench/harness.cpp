// harness.cpp: how the benchmarks measure and what they print, see harness.h.
#include "bench/harness.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace bench {

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "bench: %s\n", what);
  std::exit(1);
}

// The child's part: writes the figures to the pipe as text.
[[noreturn]] void runChild(int out, const std::function<Figures()>& side) {
  std::FILE* pipe = ::fdopen(out, "w");
  for (const auto& [name, value] : side()) std::fprintf(pipe, "%s %.17g\n", name.c_str(), value);
  const bool written = std::fclose(pipe) == 0;
  ::_exit(written ? 0 : 1);  // without destructors, which would only take time
}

}  // namespace

double cpuNs() {
  struct timespec now;
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

double residentBytes() {
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  long total = 0, resident = 0;
  if (file == nullptr || std::fscanf(file, "%ld %ld", &total, &resident) != 2) fail("no statm");
  std::fclose(file);
  return static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

double settledMemory() {
  ::malloc_trim(0);
  return residentBytes();
}

Figures inChild(const std::function<Figures()>& side) {
  std::fflush(nullptr);
  int ends[2];
  if (::pipe(ends) != 0) fail("no pipe");
  const pid_t child = ::fork();
  if (child < 0) fail("no child process");
  if (child == 0) {
    ::close(ends[0]);
    runChild(ends[1], side);
  }
  ::close(ends[1]);
  std::FILE* pipe = ::fdopen(ends[0], "r");
  Figures figures;
  char name[64];
  double value = 0;
  while (std::fscanf(pipe, "%63s %lf", name, &value) == 2) figures[name] = value;
  std::fclose(pipe);
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) fail("a child process failed");
  return figures;
}

Comparison::Comparison(int rounds, const std::vector<Side>& sides) {
  for (const Side& side : sides) names_.push_back(side.name);
  std::vector<Side> order = sides;
  for (int round = 0; round < rounds; ++round) {
    for (const Side& side : order) runs_[side.name].push_back(side.run());
    std::reverse(order.begin(), order.end());
  }
}

Values Comparison::values(const std::string& side, const std::string& figure) const {
  Values values;
  for (const Figures& run : runs_.at(side)) {
    const auto found = run.find(figure);
    if (found != run.end()) values.push_back(found->second);
  }
  return values;
}

void Comparison::printRatio(const std::string& key, std::size_t n, const std::string& side,
                            const std::string& peer, const std::string& figure) const {
  bench::printRatio(key, n, values(side, figure), values(peer, figure));
}

void Comparison::printCosts(const std::string& group, std::size_t n,
                            const std::string& figure) const {
  for (const std::string& name : names_) {
    const Values found = values(name, figure);
    if (!found.empty()) printCost(group, name, n, median(found));
  }
}

double median(Values values) {
  if (values.empty()) fail("a median of nothing");
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

void printRatio(const std::string& key, std::size_t n, const Values& side, const Values& peer) {
  if (side.empty() || side.size() != peer.size()) fail("a side is missing");
  Values ratios;
  for (std::size_t i = 0; i < side.size(); ++i) ratios.push_back(side[i] / peer[i]);
  const auto [low, high] = std::minmax_element(ratios.begin(), ratios.end());
  std::printf("ratio\t%s\t%zu\t%.4f\t%.4f\t%.4f\n", key.c_str(), n, median(ratios), *low, *high);
  std::fflush(stdout);
}

void printCost(const std::string& group, const std::string& series, std::size_t n, double value) {
  std::printf("cost\t%s\t%s\t%zu\t%.6g\n", group.c_str(), series.c_str(), n, value);
  std::fflush(stdout);
}

std::size_t toNumber(const char* text) {
  char* end = nullptr;
  const unsigned long long number = std::strtoull(text, &end, 10);
  if (number == 0 || *end != '\0') fail("expected a number");
  return number;
}

}  // namespace bench
