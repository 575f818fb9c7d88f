// playsession.cpp: plays a written session with a program and shows what its user would see.
//
//   playsession [--rows R] [--cols C] [--timeout S] SCRIPT -- COMMAND [ARGUMENT...]
//
// The script has one step a line: `expect TEXT` waits for the text on the terminal, `send TEXT`
// types it and presses Enter, `secret TEXT` does so once the program has switched the echo off;
// lines that are empty or begin with "#" are comments. TEXT is the rest of the line after one
// blank, as it stands. After the last step the program may run on to its end.
//
// A cleared screen shows as a rule. Exit status: the command's; 99 when a step does not come true,
// 98 when the command or the script cannot be started or read.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <optional>
#include <system_error>

#include "sandbox/tools/terminal.h"

namespace {

using sandbox::Terminal;

constexpr int kStepFailed = 99;
constexpr int kCannotStart = 98;

struct Settings {
  sandbox::TerminalSettings terminal;
  Terminal::Timeout timeout{20'000};
  std::string script;
  std::vector<std::string> command;
};

struct Step {
  enum class Kind { kExpect, kSend, kSecret } kind;
  std::string text;
  int line;
};

// Turns terminal output into plain lines: carriage returns and escape sequences are dropped, but
// for a cleared screen, which becomes a rule. Keeps a sequence that is cut in two for the next
// time.
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
      // "ESC [" goes on to a letter and "ESC (" has one character more; others end here.
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
      if (!atLineStart_) std::cout << '\n';
      std::cout << std::string(72, '-') << '\n';
      atLineStart_ = true;
    }
    last_.swap(sequence_);
    sequence_.clear();
  }

  std::string sequence_, last_;
  bool atLineStart_ = true;
};

std::optional<unsigned short> smallNumber(const std::string& text) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != '\0' || value < 1 || value > 10000) return std::nullopt;
  return static_cast<unsigned short>(value);
}

std::optional<Settings> parseArguments(const std::vector<std::string>& words) {
  Settings settings;
  std::size_t i = 0;
  for (; i + 1 < words.size() && words[i].starts_with("--") && words[i] != "--"; i += 2) {
    const auto value = smallNumber(words[i + 1]);
    if (!value) return std::nullopt;
    if (words[i] == "--rows")
      settings.terminal.rows = *value;
    else if (words[i] == "--cols")
      settings.terminal.columns = *value;
    else if (words[i] == "--timeout")
      settings.timeout = std::chrono::seconds(*value);
    else
      return std::nullopt;
  }
  if (i + 2 >= words.size() || words[i + 1] != "--") return std::nullopt;
  settings.script = words[i];
  settings.command.assign(words.begin() + static_cast<std::ptrdiff_t>(i) + 2, words.end());
  // Programs clear the screen in their terminal type's way; of this one ScreenCopy knows it.
  settings.terminal.environment["TERM"] = "xterm";
  return settings;
}

std::optional<Step> parseStep(const std::string& line, int number) {
  const std::size_t blank = line.find(' ');
  const std::string word = line.substr(0, blank);
  const std::string text = blank == std::string::npos ? "" : line.substr(blank + 1);
  if (word == "expect" && !text.empty()) return Step{Step::Kind::kExpect, text, number};
  if (word == "send") return Step{Step::Kind::kSend, text, number};
  if (word == "secret") return Step{Step::Kind::kSecret, text, number};
  return std::nullopt;
}

// Nothing, with a line on standard error, when the script cannot be read or understood.
std::optional<std::vector<Step>> readScript(const std::string& path) {
  std::ifstream file(path);
  std::vector<Step> steps;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line.front() == '#') continue;
    const std::optional<Step> step = parseStep(line, number);
    if (!step) {
      std::cerr << "playsession: " << path << ", line " << number
                << ": not expect, send or secret\n";
      return std::nullopt;
    }
    steps.push_back(*step);
  }
  if (file.eof()) return steps;
  std::cerr << "playsession: " << path << " cannot be read\n";
  return std::nullopt;
}

bool play(const Step& step, Terminal& terminal, Terminal::Timeout timeout) {
  switch (step.kind) {
    case Step::Kind::kExpect:
      return terminal.expect(step.text, timeout);
    case Step::Kind::kSecret:
      return terminal.expectEchoOff(timeout) && terminal.send(step.text + "\n");
    case Step::Kind::kSend:
      break;
  }
  return terminal.send(step.text + "\n");
}

std::string failureText(const Step& step) {
  const std::string line = ", script line " + std::to_string(step.line);
  if (step.kind == Step::Kind::kExpect) return "\"" + step.text + "\" did not appear" + line;
  if (step.kind == Step::Kind::kSecret) return "the echo stayed on, nothing was typed" + line;
  return "the program takes no more input" + line;
}

int run(const Settings& settings, const std::vector<Step>& steps) {
  Terminal terminal(settings.command, settings.terminal);
  ScreenCopy screen;
  std::size_t shown = 0;
  const auto showNews = [&] {
    screen.show(std::string_view(terminal.transcript()).substr(shown));
    shown = terminal.transcript().size();
  };
  for (const Step& step : steps) {
    const bool good = play(step, terminal, settings.timeout);
    showNews();
    if (good) continue;
    std::cerr << "\nplaysession: " << failureText(step) << "\n";
    return kStepFailed;
  }
  const std::optional<int> status = terminal.wait(settings.timeout);
  showNews();
  if (status) return *status;
  std::cerr << "\nplaysession: the program did not end after the last step\n";
  return kStepFailed;
}

}  // namespace

int main(int argc, char** argv) {
  const auto settings = parseArguments(std::vector<std::string>(argv + 1, argv + argc));
  if (!settings) {
    std::cerr << "Usage: playsession [--rows R] [--cols C] [--timeout S] SCRIPT -- COMMAND "
                 "[ARGUMENT...]\n";
    return kCannotStart;
  }
  const auto steps = readScript(settings->script);
  if (!steps) return kCannotStart;
  try {
    return run(*settings, *steps);
  } catch (const std::system_error& error) {
    std::cerr << "playsession: " << error.what() << "\n";
    return kCannotStart;
  }
}
