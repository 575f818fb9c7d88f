// playsession.cpp: plays a written session with a program and shows what its user would see.
//
//   playsession [--rows R] [--cols C] [--timeout S] SCRIPT -- COMMAND [ARGUMENT...]
//
// The script has one step per line: `expect TEXT` waits for the text on the terminal, `send TEXT`
// types it and presses Enter, `secret TEXT` does so once the program has switched the echo off;
// lines that are empty or begin with "#" are comments. TEXT is the rest of the line after one
// blank. After the last step the program may run to its end.
//
// A cleared screen shows as a rule. Exit status: the command's; 99 if a step does not come true, 98
// if the command line or the script is not understood.
#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "sandbox/store/text.h"
#include "sandbox/tools/terminal.h"

namespace {

using sandbox::Terminal;

constexpr int kStepFailed = 99;
constexpr int kNotUnderstood = 98;
constexpr const char* kUsage =
    "usage: playsession [--rows R] [--cols C] [--timeout S] SCRIPT -- COMMAND [ARGUMENT...]";

struct Session {
  sandbox::TerminalSettings terminal;
  Terminal::Timeout timeout{20'000};
  std::string script;
  std::vector<std::string> command;
};

struct Step {
  std::string verb, text;
  int line;
};

// Turns terminal output into plain lines: carriage returns and escape sequences are dropped, except
// for a cleared screen, which becomes a rule. A sequence may arrive in parts.
class ScreenCopy {
 public:
  void show(std::string_view output) {
    for (char c : output) take(c);
    std::cout.flush();
  }

 private:
  void take(char c) {
    if (!sequence_.empty()) {
      sequence_ += c;
      // "ESC [" runs up to a letter and "ESC (" has one character more; others end here.
      const bool isFinal = sequence_.size() == 2
                               ? c != '[' && c != '('
                               : c >= '0' && c <= '~' && (sequence_[1] == '(' || c >= '@');
      if (isFinal) finishSequence();
    } else if (c == '\033') {
      sequence_ = c;
    } else if (c != '\r') {
      atLineStart_ = c == '\n';
      std::cout << c;
    }
  }

  void finishSequence() {
    if (sequence_ == "\033[2J" || (sequence_ == "\033[J" && last_ == "\033[H")) {
      std::cout << (atLineStart_ ? "" : "\n") << std::string(72, '-') << '\n';
      atLineStart_ = true;
    }
    last_.swap(sequence_);
    sequence_.clear();
  }

  std::string sequence_, last_;
  bool atLineStart_ = true;
};

// Throws std::runtime_error for a command line that is not understood.
Session parseArguments(const std::vector<std::string>& words) {
  Session session;
  std::size_t i = 0;
  for (; i + 1 < words.size() && words[i].starts_with("--"); i += 2) {
    const auto value = sandbox::parseNumber(words[i + 1], 1, 10000);
    if (!value) throw std::runtime_error(kUsage);
    if (words[i] == "--rows") {
      session.terminal.rows = static_cast<unsigned short>(*value);
    } else if (words[i] == "--cols") {
      session.terminal.columns = static_cast<unsigned short>(*value);
    } else if (words[i] == "--timeout") {
      session.timeout = std::chrono::seconds(*value);
    } else {
      throw std::runtime_error(kUsage);
    }
  }
  if (i + 2 >= words.size() || words[i + 1] != "--") throw std::runtime_error(kUsage);
  session.script = words[i];
  session.command.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 2, words.end());
  // How a screen is cleared depends on the terminal type; ScreenCopy knows this one's.
  session.terminal.environment["TERM"] = "xterm";
  return session;
}

// Throws std::runtime_error for a script that cannot be read or is not understood.
std::vector<Step> readScript(const std::string& path) {
  std::ifstream file(path);
  std::vector<Step> steps;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line.front() == '#') continue;
    const std::size_t blank = std::min(line.find(' '), line.size());
    const Step step{line.substr(0, blank), line.substr(std::min(blank + 1, line.size())), number};
    const bool isKnown = step.verb == "expect" || step.verb == "send" || step.verb == "secret";
    if (!isKnown) {
      throw std::runtime_error(path + ", line " + std::to_string(number) +
                               ": not expect, send or secret");
    }
    steps.push_back(step);
  }
  if (!file.eof()) throw std::runtime_error(path + " cannot be read");
  return steps;
}

// Why the step did not come true; empty if it did.
std::string play(const Step& step, Terminal& terminal, Terminal::Timeout timeout) {
  if (step.verb == "expect") {
    return terminal.expect(step.text, timeout) ? "" : "\"" + step.text + "\" did not appear";
  }
  if (step.verb == "secret" && !terminal.expectEchoOff(timeout)) {
    return "the echo was still on, nothing was typed";
  }
  return terminal.send(step.text + "\n") ? "" : "the program takes no more input";
}

int run(const Session& session) {
  const std::vector<Step> steps = readScript(session.script);
  Terminal terminal(session.command, session.terminal);
  ScreenCopy screen;
  std::size_t shown = 0;
  const auto showNews = [&] {
    screen.show(std::string_view(terminal.transcript()).substr(shown));
    shown = terminal.transcript().size();
  };
  for (const Step& step : steps) {
    const std::string fault = play(step, terminal, session.timeout);
    showNews();
    if (fault.empty()) continue;
    std::cerr << "\nplaysession: " << fault << ", script line " << step.line << "\n";
    return kStepFailed;
  }
  const std::optional<int> status = terminal.wait(session.timeout);
  showNews();
  if (status) return *status;
  std::cerr << "\nplaysession: the program did not end after the last step\n";
  return kStepFailed;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(parseArguments(std::vector<std::string>(argv + 1, argv + argc)));
  } catch (const std::exception& error) {
    std::cerr << "playsession: " << error.what() << "\n";
    return kNotUnderstood;
  }
}
