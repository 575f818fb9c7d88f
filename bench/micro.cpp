// micro.cpp: what a trace line costs while tracing is off, with Google Benchmark.
//
// Usage: bench_micro [--benchmark_...]; prints the lines of harness.h.
//
// The function is the comparison that the tree calls most: without a trace line, with one, and as
// it is in the product (two lines). The three differ by less than the machine varies from one
// millisecond to the next, so there are many short repetitions, which Google Benchmark runs in a
// random order.
#include <benchmark/benchmark.h>

#include <cstring>
#include <map>
#include <string>

#include "bench/harness.h"
#include "common/ut/agttrc.h"
#include "utility/syncdb_names.h"

namespace {

compare_t ordered(int order) {
  if (order == 0) return bEqualTo;
  return order > 0 ? bGreaterThan : bLessThan;
}

[[gnu::noinline, gnu::aligned(64)]] compare_t withoutLine(void* searched, void* stored) {
  return ordered(std::strcmp(static_cast<const char*>(searched), static_cast<const char*>(stored)));
}

[[gnu::noinline, gnu::aligned(64)]] compare_t withLine(void* searched, void* stored) {
  TRACE(TR_ALL, " %s: Enter\n", "withLine()");
  return ordered(std::strcmp(static_cast<const char*>(searched), static_cast<const char*>(stored)));
}

void compareTexts(benchmark::State& state, dsBPlusTree::CompareFn function) {
  char first[] = "SALES_df_0729008281_0000001204_1", second[] = "SALES_df_0729008281_0000001205_1";
  for (auto _ : state) benchmark::DoNotOptimize(function(first, second));
}
BENCHMARK_CAPTURE(compareTexts, without_line, &withoutLine);
BENCHMARK_CAPTURE(compareTexts, with_line, &withLine);
BENCHMARK_CAPTURE(compareTexts, product, &utFindFilename);

// Collects the repetitions and prints the ratios.
class Ratios : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration) {
        times_[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
      }
    }
  }
  void Finalize() override {
    const bench::Values& without = times_["compareTexts/without_line"];
    bench::printRatio("trace_off", 1, times_["compareTexts/with_line"], without);
    bench::printRatio("trace_off_compare", 1, times_["compareTexts/product"], without);
    for (const auto& [name, values] : times_) {
      bench::printCost("trace", name.substr(name.find('/') + 1), 1, bench::median(values));
    }
  }

 private:
  std::map<std::string, bench::Values> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  Ratios ratios;
  benchmark::RunSpecifiedBenchmarks(&ratios);
  return 0;
}
