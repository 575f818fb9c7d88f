// timeutil.h: a stopwatch for API calls.
#ifndef COMMON_UT_TIMEUTIL_H
#define COMMON_UT_TIMEUTIL_H

#include <chrono>

// Measures the time between startTimer and endTimer on the steady clock. Both readings are of the
// last finished measurement, and 0 before the first.
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
