// session.cpp: a logged-on sqlplus: it takes lines and carries out what they say.
#include "sandbox/sqlplus/session.h"

#include <algorithm>
#include <utility>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

std::pair<std::string_view, std::string_view> firstWord(std::string_view text) {
  text = trimmed(text);
  const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
  return {text.substr(0, end), trimmed(text.substr(end))};
}

// True for the word itself and its abbreviations down to `fewest` letters.
bool abbreviates(std::string_view given, std::string_view word, std::size_t fewest) {
  return given.size() >= fewest && given.size() <= word.size() &&
         equalIgnoringCase(given, word.substr(0, given.size()));
}

bool beginsStatement(std::string_view word) {
  static constexpr std::string_view kWords[] = {
      "SELECT", "ALTER",    "INSERT", "UPDATE", "DELETE", "CREATE",   "DROP",   "WITH",
      "COMMIT", "ROLLBACK", "GRANT",  "REVOKE", "MERGE",  "TRUNCATE", "ANALYZE"};
  return std::ranges::any_of(
      kWords, [&](std::string_view known) { return equalIgnoringCase(word, known); });
}

}  // namespace

// The SET command. Each obeyed option has a routine that takes its value and returns the text of an
// error, or an empty text.
struct SetCommands {
  struct Row {
    std::string_view name;
    std::size_t fewest;  // letters of its shortest abbreviation
    std::string (*apply)(SqlSession& session, std::string_view value);
  };

  static std::string onOff(std::string_view name, std::string_view value, bool& flag) {
    const bool on = equalIgnoringCase(value, "ON");
    if (!on && !equalIgnoringCase(value, "OFF"))
      return "SP2-0265: " + std::string(name) + " must be set ON or OFF";
    flag = on;
    return {};
  }

  static std::string number(std::string_view name, std::string_view value, std::int64_t least,
                            std::int64_t most, std::int64_t& target) {
    const std::optional<std::int64_t> parsed = parseNumber(value, INT32_MIN, INT32_MAX);
    if (!parsed) return "SP2-0268: " + std::string(name) + " option not a valid number";
    if (*parsed < least || *parsed > most)
      return "SP2-0267: " + std::string(name) + " option " + std::string(value) +
             " out of range (" + std::to_string(least) + " through " + std::to_string(most) + ")";
    target = *parsed;
    return {};
  }

  static std::string termout(SqlSession& session, std::string_view value) {
    bool on = true;
    std::string error = onOff("termout", value, on);
    if (error.empty()) session.output_.showOnTerminal(on);
    return error;
  }

  static std::string heading(SqlSession& session, std::string_view value) {
    return onOff("heading", value, session.layout_.heading);
  }

  static std::string trimspool(SqlSession& session, std::string_view value) {
    return onOff("trimspool", value, session.layout_.trimSpool);
  }

  static std::string pagesize(SqlSession& session, std::string_view value) {
    return number("pagesize", value, 0, 50000, session.layout_.pageSize);
  }

  static std::string linesize(SqlSession& session, std::string_view value) {
    return number("linesize", value, 1, 32767, session.layout_.lineSize);
  }

  static std::string recsep(SqlSession& session, std::string_view value) {
    static constexpr std::pair<std::string_view, RecordSeparator> kWords[] = {
        {"WRAPPED", RecordSeparator::kWrapped},
        {"EACH", RecordSeparator::kEach},
        {"OFF", RecordSeparator::kOff}};
    for (const auto& [word, separator] : kWords) {
      if (!abbreviates(value, word, std::min<std::size_t>(2, word.size()))) continue;
      session.layout_.separator = separator;
      return {};
    }
    return "SP2-0158: unknown SET recsep option \"" + std::string(value) + "\"";
  }

  static std::string sqlterminator(SqlSession& session, std::string_view value) {
    session.terminatorOn_ = !equalIgnoringCase(value, "OFF");
    if (!session.terminatorOn_) return {};
    session.terminator_ = value.size() == 1 ? value.front() : ';';
    return {};
  }

  static std::string feedback(SqlSession& session, std::string_view value) {
    if (equalIgnoringCase(value, "OFF")) return number("feedback", "0", 0, 0, session.feedback_);
    if (equalIgnoringCase(value, "ON")) return number("feedback", "1", 1, 1, session.feedback_);
    return number("feedback", value, 0, 50000, session.feedback_);
  }

  static constexpr Row kObeyed[] = {
      {"TERMOUT", 4, termout},     {"HEADING", 3, heading},   {"PAGESIZE", 5, pagesize},
      {"LINESIZE", 3, linesize},   {"RECSEP", 6, recsep},     {"SQLTERMINATOR", 4, sqlterminator},
      {"TRIMSPOOL", 5, trimspool}, {"FEEDBACK", 4, feedback},
  };

  // Options of the real tool that make no difference here.
  static constexpr std::pair<std::string_view, std::size_t> kAccepted[] = {
      {"APPINFO", 4},
      {"ARRAYSIZE", 5},
      {"AUTOCOMMIT", 4},
      {"AUTOPRINT", 5},
      {"AUTORECOVERY", 8},
      {"AUTOTRACE", 5},
      {"BLOCKTERMINATOR", 3},
      {"CMDSEP", 4},
      {"COLSEP", 6},
      {"CONCAT", 3},
      {"COPYCOMMIT", 5},
      {"COPYTYPECHECK", 13},
      {"DEFINE", 3},
      {"DESCRIBE", 8},
      {"ECHO", 4},
      {"EDITFILE", 5},
      {"EMBEDDED", 3},
      {"ERRORLOGGING", 4},
      {"ESCAPE", 3},
      {"ESCCHAR", 7},
      {"EXITCOMMIT", 5},
      {"FLAGGER", 4},
      {"FLUSH", 3},
      {"HEADSEP", 5},
      {"INSTANCE", 8},
      {"LOBOFFSET", 4},
      {"LOGSOURCE", 9},
      {"LONG", 4},
      {"LONGCHUNKSIZE", 5},
      {"MARKUP", 4},
      {"NEWPAGE", 4},
      {"NULL", 4},
      {"NUMFORMAT", 4},
      {"NUMWIDTH", 3},
      {"PAUSE", 3},
      {"RECSEPCHAR", 10},
      {"SERVEROUTPUT", 9},
      {"SHIFTINOUT", 5},
      {"SHOWMODE", 4},
      {"SQLBLANKLINES", 5},
      {"SQLCASE", 4},
      {"SQLCONTINUE", 3},
      {"SQLNUMBER", 4},
      {"SQLPLUSCOMPATIBILITY", 14},
      {"SQLPREFIX", 4},
      {"SQLPROMPT", 4},
      {"SUFFIX", 3},
      {"TAB", 3},
      {"TIME", 2},
      {"TIMING", 4},
      {"TRIMOUT", 4},
      {"UNDERLINE", 3},
      {"VERIFY", 3},
      {"WRAP", 3},
  };

  static bool isAccepted(std::string_view name) {
    return std::ranges::any_of(
        kAccepted, [&](const auto& row) { return abbreviates(name, row.first, row.second); });
  }

  static const Row* findObeyed(std::string_view name) {
    const auto found = std::ranges::find_if(
        kObeyed, [&](const Row& row) { return abbreviates(name, row.name, row.fewest); });
    return found != std::end(kObeyed) ? found : nullptr;
  }
};

void SqlSession::set(std::string_view rest) {
  if (rest.empty()) output_.line("SP2-0281: set missing set option");
  while (!rest.empty()) {
    const auto [name, afterName] = firstWord(rest);
    const SetCommands::Row* row = SetCommands::findObeyed(name);
    if (row == nullptr) {
      if (!SetCommands::isAccepted(name))
        output_.line("SP2-0158: unknown SET option \"" + std::string(name) + "\"");
      return;  // how much of the line is the value of this option is not known
    }
    const auto [value, afterValue] = firstWord(afterName);
    const std::string error = row->apply(*this, value);
    if (!error.empty()) return output_.line(error);
    rest = afterValue;
  }
}

void SqlSession::spool(std::string_view rest) {
  if (rest.empty()) return output_.line("not spooling currently");
  if (equalIgnoringCase(rest, "OFF")) {
    if (!output_.stopSpool()) output_.line("SP2-0308: cannot close spool file");
    return;
  }
  std::string path(rest);
  const std::size_t nameStart = path.rfind('/') == std::string::npos ? 0 : path.rfind('/') + 1;
  if (path.find('.', nameStart) == std::string::npos) path += ".lst";
  if (!output_.startSpool(path))
    output_.line("SP2-0606: Cannot create SPOOL file \"" + path + "\"");
}

void SqlSession::leave(std::string_view rest) {
  const std::string_view word = firstWord(rest).first;
  if (const auto status = parseNumber(word, 0, 255)) exitStatus_ = static_cast<int>(*status);
  if (equalIgnoringCase(word, "FAILURE")) exitStatus_ = 1;
}

bool SqlSession::command(std::string_view word, std::string_view rest) {
  if (rest.ends_with(';')) rest = trimmed(rest.substr(0, rest.size() - 1));
  if (equalIgnoringCase(word, "SET"))
    set(rest);
  else if (abbreviates(word, "SPOOL", 3))
    spool(rest);
  else if (abbreviates(word, "PROMPT", 3))
    output_.line(rest);
  else if (!abbreviates(word, "REMARK", 3) && !word.starts_with("--"))
    return false;
  return true;
}

bool SqlSession::take(std::string_view line) {
  if (inStatement_) {
    statementLine(line);
    return true;
  }
  const auto [word, rest] = firstWord(line);
  if (word.empty()) return true;
  std::string_view bare = word;
  while (bare.ends_with(';')) bare.remove_suffix(1);
  if (abbreviates(bare, "EXIT", 4) || abbreviates(bare, "QUIT", 4)) {
    leave(rest);
    return false;
  }
  if (word == "/") {
    runBuffer();
  } else if (beginsStatement(bare)) {
    buffer_.clear();
    inStatement_ = true;
    statementLine(line);
  } else if (!command(word, rest)) {
    output_.line("SP2-0734: unknown command beginning \"" +
                 std::string(trimmed(line).substr(0, 10)) +
                 (trimmed(line).size() > 10 ? "...\"" : "\"") + " - rest of line ignored.");
  }
  return true;
}

void SqlSession::statementLine(std::string_view line) {
  const std::string_view bare = trimmed(line);
  if (bare.empty()) {
    inStatement_ = false;  // given up, but still in the buffer for "/"
    return;
  }
  const bool slash = bare == "/";
  const bool terminated = terminatorOn_ && bare.back() == terminator_;
  if (terminated) line = line.substr(0, line.rfind(terminator_));
  if (!slash) buffer_.emplace_back(line);
  if (slash || terminated) {
    inStatement_ = false;
    runBuffer();
  }
}

void SqlSession::runBuffer() {
  if (buffer_.empty()) return output_.line("SP2-0103: Nothing in SQL buffer to run.");
  try {
    const auto statement = parseStatement(buffer_, kind_, dateFormat_);
    if (const auto* format = std::get_if<SetDateFormat>(&statement)) {
      dateFormat_ = format->format;
      output_.line();
      output_.line("Session altered.");
      output_.line();
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
  output_.startRows(layout_, "HANDLE", kMaxHandle);
  for (; pieces.next(); ++rows) output_.row(pieces.handle());
  output_.line();
  if (rows == 0 && feedback_ > 0)
    output_.line("no rows selected");
  else if (feedback_ > 0 && rows >= feedback_)
    output_.line(std::to_string(rows) + (rows == 1 ? " row selected." : " rows selected."));
  else
    return;
  output_.line();
}

void SqlSession::showError(const SqlError& error) {
  output_.line(buffer_[error.line]);
  output_.line(std::string(error.column, ' ') + "*");
  output_.line("ERROR at line " + std::to_string(error.line + 1) + ":");
  output_.line(error.text);
  output_.line();
  output_.line();
}

void SqlSession::becomeInteractive() { output_.showOnTerminal(true); }

void SqlSession::finish() {
  if (!output_.stopSpool()) output_.line("SP2-0308: cannot close spool file");
}

}  // namespace sandbox
