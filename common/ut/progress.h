// progress.h: one line on the terminal that shows how far a long stage has got.
//
// The line is written to standard error, only if that is a terminal. It appears when the stage has
// lasted a second and is redrawn in place at most ten times a second. Whatever else writes to the
// terminal calls eraseProgress first. Standard output is never touched.
//
// While another program has the terminal (sqlplus), which does not know about the line, it is drawn
// one line further down and the cursor is put back where that program left it.
//
// One object at a time. Not thread-safe: a second thread may report only while the first does
// nothing but wait for it.
#ifndef COMMON_UT_PROGRESS_H
#define COMMON_UT_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace ut {

class Progress {
 public:
  // Makes the line's text from the count so far and the count per second.
  using Describe = std::function<std::string(const char* count, const char* rate)>;

  enum class Place { kHere, kBelow };  // kBelow: another program has the terminal

  explicit Progress(Describe describe, Place place = Place::kHere);
  // Erases the line.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Counts one more. Costs one branch if there is no terminal.
  void advance() {
    ++count_;
    if (active_) update();
  }
  // Sets the count.
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

// Erases the line, if one is shown.
void eraseProgress();

}  // namespace ut

#endif  // COMMON_UT_PROGRESS_H
