// timeutil.cpp: a stopwatch for API calls, see timeutil.h.
#include "common/ut/timeutil.h"

void DIfcTimeUtil::startTimer() { start_ = std::chrono::steady_clock::now(); }

void DIfcTimeUtil::endTimer() { elapsed_ = std::chrono::steady_clock::now() - start_; }

long DIfcTimeUtil::getElapsedMs() const {
  return static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed_).count());
}

double DIfcTimeUtil::getElapsedSec() const {
  return std::chrono::duration<double>(elapsed_).count();
}
