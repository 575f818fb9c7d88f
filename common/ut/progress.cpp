// progress.cpp: the line that shows how far a long stage has got, see progress.h.
#include "common/ut/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <new>
#include <string_view>
#include <utility>

#include "common/ut/nfdate.h"
#include "common/ut/result.h"
#include "common/ut/utf8.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 1s;
constexpr auto kInterval = 100ms;

// Control sequences of an ANSI terminal.
constexpr char kUp[] = "\x1b[A";
constexpr char kClearToEnd[] = "\x1b[J";  // from the cursor

std::size_t shownLength = 0;  // of the line on the terminal; 0: none
ut::Progress::Place shownPlace = ut::Progress::Place::kHere;

void toTerminal(const std::string& text) {
  ut::ignoreResult(::write(STDERR_FILENO, text.data(), text.size()), "nothing depends on it");
}

std::size_t terminalWidth() {
  struct winsize window;
  const bool known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 1;
  return known ? window.ws_col - 1u : 79u;
}

}  // namespace

ut::Progress::Progress(Describe describe, Place place)
    : active_(wouldShow()), place_(place), describe_(std::move(describe)) {
  if (!active_) return;
  begin_ = Clock::now();
  next_ = begin_ + kPatience;
}

bool ut::Progress::wouldShow() { return ::isatty(STDERR_FILENO) == 1; }

ut::Progress::~Progress() { eraseProgress(); }

void ut::Progress::update() {
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  try {
    draw(now);
  } catch (const std::bad_alloc&) {
    eraseProgress();  // the stage itself may have enough
  }
}

// In place, the line is overwritten with blanks, which any terminal understands. One line further
// down takes control sequences.
void ut::Progress::draw(Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - begin_).count();
  const auto rate = static_cast<std::uint64_t>(static_cast<double>(count_) / seconds);
  const std::string whole = describe_(formatNumber(count_).text, formatNumber(rate).text);
  const std::string_view text = withoutTornEnd(std::string_view(whole).substr(0, terminalWidth()));
  const std::size_t rest = shownLength > text.size() ? shownLength - text.size() : 0;
  std::fflush(stdout);  // what was printed before must come above the line
  if (place_ == Place::kHere) {
    toTerminal("\r" + std::string(text) + std::string(rest, ' ') + "\r");
  } else {
    // The other program may have moved the cursor onto the old line.
    toTerminal(kClearToEnd + ("\n" + std::string(text)) + "\r" + kUp);
  }
  shownLength = text.size();
  shownPlace = place_;
}

void ut::eraseProgress() {
  if (shownLength == 0) return;
  const bool here = shownPlace == Progress::Place::kHere;
  toTerminal(here ? "\r" + std::string(shownLength, ' ') + "\r" : kClearToEnd);
  shownLength = 0;
}
