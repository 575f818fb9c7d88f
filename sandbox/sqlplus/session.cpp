// session.cpp: a logged-on sqlplus: it takes lines and carries out what they say.
#include "sandbox/sqlplus/session.h"

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <istream>
#include <thread>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

volatile sig_atomic_t interrupted = 0;

void noteInterrupt(int) { interrupted = 1; }

}  // namespace

SqlSession::SqlSession(OracleCatalog catalog, const Language& language)
    : catalog_(std::move(catalog)), language_(language) {
  ::signal(SIGINT, noteInterrupt);
}

bool SqlSession::takeAll(std::istream& script) {
  std::string line;
  while (std::getline(script, line)) {
    if (settings_.echo) output_.line("SQL> " + line);
    if (!take(line)) return false;
  }
  return true;
}

bool SqlSession::take(std::string_view line) {
  if (inStatement_) {
    statementLine(line);
    return true;
  }
  const auto [word, rest] = firstWord(line);
  const std::string name = upperCase(word.substr(0, word.find(';')));
  if (name == "EXIT" || name == "QUIT") {
    if (const auto status = parseNumber(rest, 0, 255)) exitStatus_ = static_cast<int>(*status);
    return false;
  }
  if (name == "SELECT" || name == "ALTER") {
    statement_.clear();
    statementLine(line);
  } else if (!word.empty() && !command(name, rest)) {
    output_.line("SP2-0734: unknown command beginning \"" +
                 std::string(trimmed(line).substr(0, 10)) + "...\" - rest of line ignored.");
  }
  return true;
}

bool SqlSession::command(std::string_view word, std::string_view rest) {
  if (rest.ends_with(';')) rest = trimmed(rest.substr(0, rest.size() - 1));
  if (word == "SET") {
    reportError(applySet(rest, settings_));
  } else if (abbreviates(word, "COLUMN", 3)) {
    reportError(applyColumn(rest, settings_));
  } else if (word == "SPOOL") {
    spool(rest);
  } else if (word == "PROMPT") {
    output_.line(rest);
  } else {
    return word == "REM" || word == "REMARK" || word.starts_with("--");
  }
  return true;
}

void SqlSession::reportError(const std::string& error) {
  if (!error.empty()) output_.line(error);
}

void SqlSession::spool(std::string_view rest) {
  if (rest.empty()) return output_.line("not spooling currently");
  if (equalIgnoringCase(rest, "OFF")) return finish();
  const std::string path(rest);
  if (!output_.startSpool(path)) {
    output_.line("SP2-0606: Cannot create SPOOL file \"" + path + "\"");
  }
}

void SqlSession::statementLine(std::string_view line) {
  const std::string_view bare = trimmed(line);
  const bool isTerminated = settings_.terminator != '\0' && bare.ends_with(settings_.terminator);
  inStatement_ = !bare.empty() && !isTerminated && bare != "/";
  if (bare.empty()) return;
  if (isTerminated) line = line.substr(0, line.rfind(settings_.terminator));
  if (bare != "/") statement_.append(line).append("\n");
  if (!inStatement_) runStatement();
}

void SqlSession::runStatement() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  try {
    const auto statement = parseStatement(statement_, catalog_.kind(), dateFormat_);
    if (const auto* format = std::get_if<SetDateFormat>(&statement)) {
      dateFormat_ = format->format;
      const std::string altered = language_.sentence(language_.texts().altered);
      if (settings_.feedback > 0) output_.line("\n" + altered + "\n");
    } else {
      showHandles(std::get<SelectHandles>(statement));
    }
  } catch (const SqlError& error) {
    showError(error);
  } catch (const StoreError& error) {
    showError({std::string("ORA-00600: internal error code, arguments: [") + error.what() + "]"});
  }
  if (!settings_.timing) return;
  const auto hundredths =
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count() / 10;
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d.%02d", static_cast<int>(hundredths / 360000),
                static_cast<int>(hundredths / 6000 % 60), static_cast<int>(hundredths / 100 % 60),
                static_cast<int>(hundredths % 100));
  output_.line(language_.sentence(language_.texts().elapsed) + text);
}

void SqlSession::showHandles(const SelectHandles& bounds) {
  std::int64_t rows = 0;
  std::string buffer;
  PieceReader pieces(catalog_, bounds.earliest, bounds.latest);
  const std::chrono::milliseconds delay(catalog_.rowDelay());
  interrupted = 0;
  output_.startRows();
  for (; interrupted == 0 && pieces.next(); ++rows) {
    if (!settings_.feedbackOnly) output_.row(language_.encoded(pieces.handle(), buffer));
    if (delay.count() > 0) std::this_thread::sleep_for(delay);
  }
  output_.line();
  if (settings_.feedback == 0 || (rows > 0 && rows < settings_.feedback)) return;
  const Texts& texts = language_.texts();
  const std::string_view text = rows == 0 ? texts.noRows : rows == 1 ? texts.oneRow : texts.rows;
  output_.line(language_.sentence(text, rows) + "\n");
}

// The line of the statement, with a star under the place.
void SqlSession::showError(const SqlError& error) {
  const std::string_view before = std::string_view(statement_).substr(0, error.offset);
  const std::size_t start = before.rfind('\n') + 1;  // 0 in the first line
  output_.line(statement_.substr(start, statement_.find('\n', start) - start));
  output_.line(std::string(error.offset - start, ' ') + "*");
  output_.line(
      language_.sentence(language_.texts().errorAtLine, std::ranges::count(before, '\n') + 1));
  output_.line(error.text + "\n\n");
}

void SqlSession::finish() {
  if (!output_.stopSpool()) output_.line("SP2-0308: cannot close spool file");
}

}  // namespace sandbox
