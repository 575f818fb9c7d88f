// progress.h: one line on the terminal that says how far a long stage is.
//
// It stands on standard error, only if that is a terminal, from a second after the stage's begin
// on, and is rewritten in place ten times a second at most. Whatever writes to the terminal calls
// eraseProgress first. Standard output is never touched.
//
// While another program has the terminal (sqlplus), which does not know of the line, it stands one
// line further down, and the cursor waits where that program left it.
//
// One at a time. Not for several threads at once: a thread that reports for another one, which
// waits for it, is the only one that may.
#ifndef COMMON_UT_PROGRESS_H
#define COMMON_UT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace ut {

class Progress {
 public:
  // The line's text for what was done until now, and how much of it in a second.
  using Describe = std::function<std::string(const char* count, const char* rate)>;

  enum class Place { kHere, kBelow };  // kBelow: another program has the terminal

  explicit Progress(Describe describe, Place place = Place::kHere);
  // Erases the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // One more is done. Next to nothing when nothing can be shown.
  void advance() {
    ++count_;
    if (active_) update();
  }
  // So many are done.
  void reach(std::uint64_t count) {
    count_ = count;
    if (active_) update();
  }

  // Whether there is a terminal to show it on.
  static bool wouldShow();

 private:
  using Clock = std::chrono::steady_clock;

  void update();
  void draw(Clock::time_point now);

  const bool active_;
  const Place place_;
  const Describe describe_;
  std::uint64_t count_ = 0;
  Clock::time_point begin_, next_;
};

// Takes the line off the terminal, if there is one.
void eraseProgress();

}  // namespace ut

#endif  // COMMON_UT_PROGRESS_H
