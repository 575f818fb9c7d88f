// timeutil.h: a stopwatch for API calls.
#ifndef COMMON_UT_TIMEUTIL_H
#define COMMON_UT_TIMEUTIL_H

#include <chrono>

// Measures the time between startTimer and endTimer on the steady clock. Before the first start
// and until the end both readings are those of the last finished measurement, 0 at first.
class DIfcTimeUtil {
 public:
  void startTimer();
  void endTimer();
  long getElapsedMs() const;
  double getElapsedSec() const;

 private:
  std::chrono::steady_clock::time_point start_{};
  std::chrono::steady_clock::duration elapsed_{};
};

#endif  // COMMON_UT_TIMEUTIL_H
