// session.cpp: a logged-on sqlplus: it takes lines and carries out what they say.
#include "sandbox/sqlplus/session.h"

#include <algorithm>

#include "sandbox/store/text.h"

namespace sandbox {

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
    inStatement_ = true;
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
    const std::string error = applySet(rest, settings_);
    if (!error.empty()) output_.line(error);
  } else if (word == "SPOOL") {
    spool(rest);
  } else if (word == "PROMPT") {
    output_.line(rest);
  } else {
    return word == "REM" || word == "REMARK" || word.starts_with("--");
  }
  return true;
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
  try {
    const auto statement = parseStatement(statement_, catalog_.kind(), dateFormat_);
    if (const auto* format = std::get_if<SetDateFormat>(&statement)) {
      dateFormat_ = format->format;
      output_.line("\nSession altered.\n");
    } else {
      showHandles(std::get<SelectHandles>(statement));
    }
  } catch (const SqlError& error) {
    showError(error);
  } catch (const StoreError& error) {
    showError({std::string("ORA-00600: internal error code, arguments: [") + error.what() + "]"});
  }
}

void SqlSession::showHandles(const SelectHandles& bounds) {
  std::int64_t rows = 0;
  PieceReader pieces(catalog_, bounds.earliest, bounds.latest);
  output_.startRows();
  for (; pieces.next(); ++rows) output_.row(pieces.handle());
  output_.line();
  if (settings_.feedback == 0 || (rows > 0 && rows < settings_.feedback)) return;
  output_.line((rows == 0 ? "no" : std::to_string(rows)) + (rows == 0   ? " rows selected\n"
                                                            : rows == 1 ? " row selected.\n"
                                                                        : " rows selected.\n"));
}

// The line of the statement, with a star under the place.
void SqlSession::showError(const SqlError& error) {
  const std::string_view before = std::string_view(statement_).substr(0, error.offset);
  const std::size_t start = before.rfind('\n') + 1;  // 0 in the first line
  const auto number = std::ranges::count(before, '\n') + 1;
  output_.line(statement_.substr(start, statement_.find('\n', start) - start));
  output_.line(std::string(error.offset - start, ' ') + "*");
  output_.line("ERROR at line " + std::to_string(number) + ":\n" + error.text + "\n\n");
}

void SqlSession::finish() {
  if (!output_.stopSpool()) output_.line("SP2-0308: cannot close spool file");
}

}  // namespace sandbox
