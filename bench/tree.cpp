// tree.cpp: the search tree of handles compared with what one would use instead.
//
// Usage: bench_tree ROUNDS [+]N ...; with "+" only the random order, for sizes that take long.
//
// Each round of each side is a child process. It stores N handles and then looks up all of them, at
// least kLookups times in all, and as many others that are not there, in another random order.
#include <cstddef>
#include <cstring>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#ifdef BENCH_WITH_ABSL
#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_set.h>
#endif

#include "bench/handles.h"
#include "bench/harness.h"
#include "utility/syncdb_names.h"

namespace {

constexpr std::size_t kLookups = 200'000;
constexpr std::size_t kMostLookups = 1'000'000;

struct Product {
  dsBPlusTree tree{utFreeTree};
  bool insert(const std::string& handle) {
    return tree.IsertItem(const_cast<char*>(handle.c_str()), static_cast<int>(handle.size()) + 1,
                          utInsertFilename, utFindFilename) == kTreeStored;
  }
  bool contains(const std::string& handle) {
    return tree.SearchItem(const_cast<char*>(handle.c_str()), utFindFilename) != nullptr;
  }
};

template <typename Set>
struct Peer {
  Set set;
  bool insert(const std::string& handle) { return set.insert(handle).second; }
  bool contains(const std::string& handle) const { return set.find(handle) != set.end(); }
};

// Nanoseconds for one look-up; each of them must give `expected`.
template <typename Container>
double lookUp(Container& container, const bench::Handles& handles, bool expected) {
  const std::size_t times = (kLookups + handles.size() - 1) / handles.size();
  std::size_t found = 0;
  const double begin = bench::cpuNs();
  for (std::size_t i = 0; i < times; ++i) {
    for (const std::string& handle : handles) found += container.contains(handle) ? 1 : 0;
  }
  const double spent = bench::cpuNs() - begin;
  const std::size_t all = times * handles.size();
  if (found != (expected ? all : 0)) std::abort();
  return spent / static_cast<double>(all);
}

struct Input {
  bench::Handles stored;        // in the order of insertion
  bench::Handles hits, misses;  // empty: only the insertion is measured
};

template <typename Container>
bench::Figures measure(const Input& input) {
  return bench::inChild([&] {
    const double count = static_cast<double>(input.stored.size());
    const double before = bench::settledMemory();
    // Never destroyed: the child process ends without it.
    auto* container = new Container;
    const double begin = bench::cpuNs();
    for (const std::string& handle : input.stored) {
      if (!container->insert(handle)) std::abort();
    }
    bench::Figures figures;
    figures["build"] = (bench::cpuNs() - begin) / count;
    figures["memory"] = (bench::residentBytes() - before) / count;
    if (!input.hits.empty()) {
      figures["hit"] = lookUp(*container, input.hits, true);
      figures["miss"] = lookUp(*container, input.misses, false);
    }
    return figures;
  });
}

const char kTree[] = "tree", kSet[] = "std::set";

std::vector<bench::Side> sides(const Input& input, bool withPeers) {
  std::vector<bench::Side> result = {
      {kTree, [&] { return measure<Product>(input); }},
      {kSet, [&] { return measure<Peer<std::set<std::string>>>(input); }},
  };
  if (!withPeers) return result;
  result.push_back({"std::unordered_set",
                    [&] { return measure<Peer<std::unordered_set<std::string>>>(input); }});
#ifdef BENCH_WITH_ABSL
  result.push_back(
      {"absl::btree_set", [&] { return measure<Peer<absl::btree_set<std::string>>>(input); }});
  result.push_back({"absl::flat_hash_set",
                    [&] { return measure<Peer<absl::flat_hash_set<std::string>>>(input); }});
#endif
  return result;
}

// Compares one order of insertion.
void compareOrder(const std::string& order, int rounds, std::size_t n, bench::Handles stored) {
  const Input input = {std::move(stored), {}, {}};
  const bench::Comparison comparison(rounds, sides(input, false));
  comparison.printRatio("tree_build_" + order, n, kTree, kSet, "build");
  comparison.printRatio("tree_memory_" + order, n, kTree, kSet, "memory");
  comparison.printCosts("build_" + order, n, "build");
}

// Prints the costs of one size, and returns those of the tree's look-ups that hit.
bench::Values compareSize(int rounds, std::size_t n, bool randomOnly) {
  const bench::Handles ascending = bench::makeHandles(n, false);
  Input random = {bench::shuffled(ascending, 1), bench::shuffled(ascending, 2),
                  bench::shuffled(bench::makeHandles(n, true), 3)};
  if (n > kMostLookups) {
    random.hits.resize(kMostLookups);
    random.misses.resize(kMostLookups);
  }
  const bench::Comparison comparison(rounds, sides(random, true));
  for (const char* figure : {"build", "hit", "miss", "memory"}) {
    const bool ordered = std::strcmp(figure, "build") == 0 || std::strcmp(figure, "memory") == 0;
    comparison.printRatio(std::string("tree_") + figure + (ordered ? "_random" : ""), n, kTree,
                          kSet, figure);
    comparison.printCosts(ordered ? std::string(figure) + "_random" : figure, n, figure);
  }
  if (!randomOnly) {
    compareOrder("ascending", rounds, n, ascending);
    compareOrder("descending", rounds, n, {ascending.rbegin(), ascending.rend()});
  }
  return comparison.values(kTree, "hit");
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? static_cast<int>(bench::toNumber(argv[1])) : 3;
  bench::Values first;
  for (int i = 2; i < argc; ++i) {
    const bool randomOnly = *argv[i] == '+';
    const std::size_t n = bench::toNumber(argv[i] + (randomOnly ? 1 : 0));
    const bench::Values hits = compareSize(randomOnly ? 3 : rounds, n, randomOnly);
    if (first.empty()) first = hits;
    if (!randomOnly && i > 2) bench::printRatio("tree_hit_growth", n, hits, first);
  }
  return 0;
}
