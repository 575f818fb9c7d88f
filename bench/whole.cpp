// whole.cpp: whole runs of vexosync compared with small programs that make the same library calls.
//
// Usage: bench_whole sync ROUNDS N ORPHANS    SYNCDB on a site of N objects; the list is left
//        bench_whole delete ROUNDS N          DELETE of all N objects, 255 in each transaction
//
// SANDBOX_HOME names the site that run.sh has made, with the files
//   handles    what the catalog knows, one handle on each line, in the catalog's order
//   fresh.db   the store as it is before a run
//   answers    what the user types
//   leave      the same without a deletion, for DELETE
//
// Processor time and memory are those of the program itself (usage.cpp), without sqlplus. What the
// bare query needs counts as the client library's share of the memory.
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "bench/harness.h"
#include "bench/records.h"
#include "utility/syncdb_names.h"

namespace {

constexpr int kLeft = 300 & 0xff;  // the pick list was left

std::string site(const char* name) { return std::string(std::getenv("SANDBOX_HOME")) + "/" + name; }

void restoreStore() {
  for (const char* name : {"store.db-wal", "store.db-shm"}) std::filesystem::remove(site(name));
  std::filesystem::copy_file(site("fresh.db"), site("store.db"),
                             std::filesystem::copy_options::overwrite_existing);
}

// Runs a command line that must end with `status`: "cpu" and "wall" in seconds, "peak" in bytes.
bench::Figures run(const std::string& command, int status) {
  const std::string usage = site("usage");
  ::setenv("VEXO_BENCH_USAGE", usage.c_str(), 1);
  const auto begin = std::chrono::steady_clock::now();
  const int ended = std::system((command + " >" + site("screen") + " 2>&1").c_str());
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(ended) || WEXITSTATUS(ended) != status) {
    std::fprintf(stderr, "bench: '%s' ended with %d\n", command.c_str(), WEXITSTATUS(ended));
    std::exit(1);
  }
  bench::Figures figures = {{"wall", wall.count()}};
  std::FILE* file = std::fopen(usage.c_str(), "r");
  char name[16];
  double value = 0;
  while (file != nullptr && std::fscanf(file, "%15s %lf", name, &value) == 2) figures[name] = value;
  if (file != nullptr) std::fclose(file);
  std::filesystem::remove(usage);
  return figures;
}

// The memory that a tree of the site's handles and a list of its orphans hold.
bench::Figures treeAndList(std::size_t orphans) {
  return bench::inChild([&] {
    const double before = bench::settledMemory();
    auto* tree = new dsBPlusTree(utFreeTree);
    std::FILE* file = std::fopen(site("handles").c_str(), "r");
    char line[1024];
    while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr) {
      line[std::strcspn(line, "\n")] = '\0';
      const int size = static_cast<int>(std::strlen(line)) + 1;
      if (tree->IsertItem(line, size, utInsertFilename, utFindFilename) == kTreeNoMemory) {
        std::abort();
      }
    }
    auto* list = new ObjectList;
    bench::fillList(list, orphans);
    bench::keep(list);
    return bench::Figures{{"held", bench::residentBytes() - before}};
  });
}

const char kProgram[] = "vexosync", kSet[] = "bare loop and std::set", kQuery[] = "bare loop";

void compareSync(int rounds, std::size_t n, const std::string& orphans) {
  restoreStore();
  const bench::Comparison comparison(
      rounds, {{kProgram, [] { return run("bench_vexosync SYNCDB <" + site("answers"), kLeft); }},
               {kSet, [&] { return run("bench_bare sync " + site("handles") + " " + orphans, 0); }},
               {kQuery, [] { return run("bench_bare query", 0); }},
               {"tree and list", [&] { return treeAndList(bench::toNumber(orphans.c_str())); }}});
  comparison.printRatio("sync_cpu", n, kProgram, kSet, "cpu");
  bench::Values own = comparison.values(kProgram, "peak");
  const bench::Values library = comparison.values(kQuery, "peak");
  for (std::size_t i = 0; i < own.size(); ++i) own[i] -= library[i];
  bench::printRatio("sync_memory", n, own, comparison.values("tree and list", "held"));
  comparison.printCosts("sync_cpu", n, "cpu");
  comparison.printCosts("sync_wall", n, "wall");
  comparison.printCosts("sync_peak", n, "peak");
}

const char kLeaving[] = "vexosync, list only", kListing[] = "bare query";

void compareDelete(int rounds, std::size_t n) {
  const auto fresh = [](const std::string& command, int status) {
    restoreStore();
    return run(command, status);
  };
  const bench::Comparison comparison(
      rounds,
      {{kProgram, [&] { return fresh("bench_vexosync DELETE <" + site("answers"), kLeft); }},
       {kQuery, [&] { return fresh("bench_bare delete " + std::to_string(n), 0); }},
       {kLeaving, [&] { return fresh("bench_vexosync DELETE <" + site("leave"), kLeft); }},
       {kListing, [&] { return fresh("bench_bare query", 0); }}});
  comparison.printRatio("delete_cpu", n, kProgram, kQuery, "cpu");
  // The deletion alone, without listing and picking the objects.
  bench::Values own = comparison.values(kProgram, "cpu"), bare = comparison.values(kQuery, "cpu");
  const bench::Values leaving = comparison.values(kLeaving, "cpu");
  const bench::Values listing = comparison.values(kListing, "cpu");
  for (std::size_t i = 0; i < own.size(); ++i) {
    own[i] -= leaving[i];
    bare[i] -= listing[i];
  }
  bench::printRatio("delete_alone", n, own, bare);
  comparison.printRatio("delete_wall", n, kProgram, kQuery, "wall");
  comparison.printCosts("delete_cpu", n, "cpu");
  comparison.printCosts("delete_wall", n, "wall");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 3 ? argv[1] : "";
  if (command == "sync" && argc == 5) {
    compareSync(static_cast<int>(bench::toNumber(argv[2])), bench::toNumber(argv[3]), argv[4]);
  } else if (command == "delete") {
    compareDelete(static_cast<int>(bench::toNumber(argv[2])), bench::toNumber(argv[3]));
  } else {
    return 2;
  }
  return 0;
}
