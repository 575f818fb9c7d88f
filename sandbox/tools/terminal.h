// terminal.h: runs a program on a pseudo-terminal and talks with it as a user would.
//
// The program gets a session of its own whose controlling terminal is the pseudo-terminal, so that
// "/dev/tty", window sizes, echo and Ctrl-C work as on a real one. All waiting has a limit, which
// the environment's VEXO_TEST_PATIENCE multiplies (a whole number; unset: 1), for machines that are
// slow. The destructor kills a program that is still running, and what it has in its session's
// foreground.
//
// Output is read whenever this class waits or sends, so that a program that writes much is never
// blocked by a caller that sends much. Only for processes with one thread, because of fork.
#ifndef SANDBOX_TOOLS_TERMINAL_H
#define SANDBOX_TOOLS_TERMINAL_H

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

struct TerminalSettings {
  unsigned short rows = 24, columns = 80;
  std::map<std::string, std::string> environment;  // added to the caller's own, or replacing it
  std::vector<std::string> unset;                  // variables that the program does not get
  std::string directory;                           // working directory; empty: the caller's
};

class Terminal {
 public:
  using Timeout = std::chrono::milliseconds;
  static constexpr Timeout kDefaultTimeout{10'000};

  // Starts `command`, whose first word is looked up on the program's search path; one that cannot
  // be started says so on the terminal and ends with 127. Throws std::system_error if there is no
  // terminal to be had.
  explicit Terminal(std::vector<std::string> command, const TerminalSettings& settings = {});
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Waits for `text` in the output after the last expectation's text, and continues after it.
  // False if the time is over or the program has ended without it; then nothing is consumed.
  bool expect(std::string_view text, Timeout timeout = kDefaultTimeout);

  // Waits until the program has switched the echo off (for a password). False at the timeout or
  // end.
  bool expectEchoOff(Timeout timeout = kDefaultTimeout);

  // Types the text as it is; a line ends with "\n". False if the program takes no more input.
  bool send(std::string_view text);

  // Changes the window size; the program gets SIGWINCH.
  void resize(unsigned short rows, unsigned short columns);

  // Sends a signal to the programs in the terminal's foreground, as the terminal itself does for
  // Ctrl-C. False if there is none.
  bool sendSignal(int number);

  // Takes the terminal away: its programs get SIGHUP, and read and write nothing any more. What
  // they had written is in the transcript; of the functions that talk to the program only wait()
  // works afterwards.
  void hangUp();

  // Whether typed characters are shown now.
  bool echoIsOn() const;

  // Waits for the end and returns the exit status, 128 + the signal's number for a killed program.
  // Nothing if the time is over: then the program has been killed.
  std::optional<int> wait(Timeout timeout = kDefaultTimeout);

  // All output so far, line ends as the terminal makes them ("\r\n").
  const std::string& transcript() const { return transcript_; }

 private:
  // Reads once, after waiting up to `limit` for output. False if there was none.
  bool readWithin(Timeout limit);
  // True if the program has ended; keeps its status.
  bool reap();
  void kill();

  int master_ = -1;
  pid_t child_ = -1;
  bool outputEnded_ = false;
  std::optional<int> status_;
  std::string transcript_;
  std::size_t consumed_ = 0;
};

}  // namespace sandbox

#endif  // SANDBOX_TOOLS_TERMINAL_H
