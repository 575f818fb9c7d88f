// terminal.h: runs a program on a pseudo-terminal and talks with it as a user would.
//
// The program gets a session of its own whose controlling terminal is the pseudo-terminal, so that
// "/dev/tty", window sizes, echo and Ctrl-C work as on a real one. All waiting has a limit; whoever
// stops waiting still owns a running program, and the destructor ends it with everything that it
// started in its session's foreground.
//
// Output is read whenever this class waits or sends: a program that writes much is never blocked by
// a caller that sends much. Not for several threads.
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
  std::map<std::string, std::string> environment;  // added to, or in place of, the caller's own
  std::vector<std::string> unset;                  // variables that the program does not get
  std::string directory;                           // working directory; empty: the caller's
};

class Terminal {
 public:
  using Timeout = std::chrono::milliseconds;
  static constexpr Timeout kDefaultTimeout{10'000};

  // Starts `command`, whose first word is looked up on the program's search path. Throws
  // std::system_error when there is no terminal to be had, the program cannot be started, or the
  // directory cannot be entered.
  explicit Terminal(const std::vector<std::string>& command, const TerminalSettings& settings = {});
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // Waits until `text` stands in the output after the last expectation's text, and goes on after
  // it. False when the time is over or the program has ended without it; then nothing is consumed.
  bool expect(std::string_view text, Timeout timeout = kDefaultTimeout);

  // Waits until the program has switched the echo off (for a password). False at the timeout or
  // end.
  bool expectEchoOff(Timeout timeout = kDefaultTimeout);

  // Types the text as it stands; a line ends with "\n". False when the program takes no more input.
  bool send(std::string_view text);
  // Types the end-of-input character; at the beginning of a line it ends the program's input.
  bool sendEof();

  // Changes the window size; the program gets SIGWINCH.
  void resize(unsigned short rows, unsigned short columns);

  // Sends a signal to the programs in the terminal's foreground, as the terminal itself does for
  // Ctrl-C. False when there is none.
  bool sendSignal(int number);

  // Takes the terminal away: its programs get SIGHUP, and read and write nothing any more. What
  // they had written is in the transcript; of the functions that talk to the program only wait()
  // works afterwards.
  void hangUp();

  // Whether typed characters are shown now. False also when the program has ended.
  bool echoIsOn() const;

  // Waits for the end and returns the exit status, 128 + the signal's number for a killed program.
  // Nothing when the time is over: then the program has been killed.
  std::optional<int> wait(Timeout timeout = kDefaultTimeout);

  // All output so far, line ends as the terminal makes them ("\r\n").
  const std::string& transcript() const { return transcript_; }
  // The output after the last expectation's text.
  std::string_view sinceLastExpect() const {
    return std::string_view(transcript_).substr(consumed_);
  }

 private:
  using Clock = std::chrono::steady_clock;

  [[noreturn]] void runChild(int terminal, int report, const std::vector<char*>& arguments,
                             const std::vector<char*>& environment, const char* directory) const;
  void startChild(const std::string& device, const std::vector<std::string>& command,
                  const TerminalSettings& settings);

  // Reads what is there, waiting for it at most until `until`. False at the end of the output and
  // when the program has ended without more of it.
  bool readSome(Clock::time_point until);
  // Reads what is there without waiting.
  void drain();
  // Reads the last output of a program that has ended.
  void readToEnd();
  // True when the program has ended; keeps its status.
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
