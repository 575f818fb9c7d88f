// usage.cpp: linked into a program, writes what the process has used when it ends.
//
// VEXO_BENCH_USAGE names the file: "cpu SECONDS", "peak BYTES". Child processes (sqlplus, the
// shell) must not count, which is why the process itself takes the figures.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

namespace {

double seconds(const struct timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// The peak of the resident size, in KiB. getrusage would include what was there before the program
// was loaded.
long peakKiB() {
  std::FILE* status = std::fopen("/proc/self/status", "r");
  long peak = 0;
  char line[256];
  while (status != nullptr && std::fgets(line, sizeof line, status) != nullptr) {
    if (std::sscanf(line, "VmHWM: %ld", &peak) == 1) break;
  }
  if (status != nullptr) std::fclose(status);
  return peak;
}

struct AtExit {
  ~AtExit() {
    const char* path = std::getenv("VEXO_BENCH_USAGE");
    std::FILE* file = path == nullptr ? nullptr : std::fopen(path, "w");
    struct rusage use;
    if (file == nullptr || ::getrusage(RUSAGE_SELF, &use) != 0) return;
    std::fprintf(file, "cpu %.6f\npeak %.0f\n", seconds(use.ru_utime) + seconds(use.ru_stime),
                 static_cast<double>(peakKiB()) * 1024);
    std::fclose(file);
  }
} atExit;

}  // namespace
