// handles.h: backup handles for the benchmarks, in the form that RMAN's formats give.
#ifndef BENCH_HANDLES_H
#define BENCH_HANDLES_H

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace bench {

using Handles = std::vector<std::string>;

// `count` different handles of 32 to 34 characters from four databases, in ascending order. The odd
// ones differ from all others: they are the ones that are looked up and not found.
inline Handles makeHandles(std::size_t count, bool odd) {
  static constexpr const char* kDatabases[] = {"ORCL", "SALES", "FINDW", "HRPROD"};
  Handles handles;
  handles.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    char text[64];
    std::snprintf(text, sizeof text, "%s_df_%010zu_%010zu_%d", kDatabases[i % 4],
                  729008281 + i * 37, 1204 + i / 3, odd ? 2 : 1);
    handles.emplace_back(text);
  }
  std::sort(handles.begin(), handles.end());
  return handles;
}

// The same in a random order, in memory too, because the texts are allocated in that order.
inline Handles shuffled(const Handles& handles, unsigned seed) {
  std::vector<std::size_t> order(handles.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), std::mt19937(seed));
  Handles result;
  result.reserve(handles.size());
  for (const std::size_t i : order) result.push_back(handles[i]);
  return result;
}

}  // namespace bench

#endif  // BENCH_HANDLES_H
