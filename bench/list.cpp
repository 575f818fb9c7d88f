// list.cpp: the list of backup objects compared with bare memory and with other containers.
//
// Usage: bench_list ROUNDS N ...
//
// "memory floor" does what every list must do: it clears each record, fills it, and copies it to
// memory that was never used before.
#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <list>
#include <vector>

#include "bench/harness.h"
#include "bench/records.h"

namespace {

// Runs `fill` in a child process: nanoseconds and bytes for each of `n` records.
template <typename Fill>
bench::Figures measure(std::size_t n, Fill fill) {
  return bench::inChild([&] {
    const double before = bench::settledMemory();
    const double begin = bench::cpuNs();
    fill(n);
    const double spent = bench::cpuNs() - begin;
    return bench::Figures{
        {"append", spent / static_cast<double>(n)},
        {"memory", (bench::residentBytes() - before) / static_cast<double>(n)},
        {"record", static_cast<double>(sizeof(utZylObj_s))},
    };
  });
}

void fillFloor(std::size_t n) {
  void* const memory = ::mmap(nullptr, n * sizeof(utZylObj_s), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) std::abort();
  char* to = static_cast<char*>(memory);
  for (std::size_t i = 0; i < n; ++i, to += sizeof(utZylObj_s)) {
    utZylObj_s object;
    std::memset(&object, 0, sizeof object);
    bench::fillRecord(&object, i);
    std::memcpy(to, &object, sizeof object);
    bench::keep(to);
  }
}

template <typename Container>
void fillStandard(std::size_t n) {
  auto* container = new Container;  // the child process ends without destroying it
  for (std::size_t i = 0; i < n; ++i) {
    utZylObj_s object = {};
    bench::fillRecord(&object, i);
    container->push_back(object);
  }
  bench::keep(container);
}

void compare(int rounds, std::size_t n) {
  const auto fillProduct = [](std::size_t count) {
    auto* list = new ObjectList;
    bench::fillList(list, count);
    bench::keep(list);
  };
  const bench::Comparison comparison(
      rounds, {{"list", [&] { return measure(n, fillProduct); }},
               {"memory floor", [&] { return measure(n, fillFloor); }},
               {"std::list", [&] { return measure(n, fillStandard<std::list<utZylObj_s>>); }},
               {"std::vector", [&] { return measure(n, fillStandard<std::vector<utZylObj_s>>); }}});
  comparison.printRatio("list_append", n, "list", "memory floor", "append");
  bench::printRatio("list_memory", n, comparison.values("list", "memory"),
                    comparison.values("list", "record"));
  comparison.printCosts("list_append", n, "append");
  comparison.printCosts("list_memory", n, "memory");
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? static_cast<int>(bench::toNumber(argv[1])) : 3;
  for (int i = 2; i < argc; ++i) compare(rounds, bench::toNumber(argv[i]));
  return 0;
}
