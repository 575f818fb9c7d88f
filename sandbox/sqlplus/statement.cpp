// statement.cpp: the SQL statements that sqlplus understands here.
#include "sandbox/sqlplus/statement.h"

#include <algorithm>

#include "sandbox/sqlplus/oracle_date.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || isDigit(c) || c == '_' || c == '$' ||
         c == '#' || c == '.';
}

// Reads a statement from left to right; `token_` is what comes next.
class Parser {
 public:
  Parser(std::string_view statement, CatalogKind kind, std::string_view dateFormat)
      : statement_(statement), kind_(kind), dateFormat_(dateFormat) {
    advance();
  }

  std::variant<SelectHandles, SetDateFormat> parse() {
    if (take("SELECT")) return select();
    if (take("ALTER")) return alter();
    fail("ORA-00900: invalid SQL statement");
  }

 private:
  [[noreturn]] void fail(std::string text) const { throw SqlError{std::move(text), start_}; }

  // A word in capitals, a quoted text with its first quote, or a symbol; empty at the end, where
  // errors are marked at the last token.
  void advance() {
    const std::size_t next =
        std::min(statement_.find_first_not_of(" \t\n", end_), statement_.size());
    token_.clear();
    if (next == statement_.size()) return;
    start_ = end_ = next;
    if (statement_[end_] == '\'') return quotedText();
    while (end_ < statement_.size() && isWordCharacter(statement_[end_])) ++end_;
    if (end_ == start_) {
      const std::string_view two = statement_.substr(start_, 2);
      end_ += two == ">=" || two == "<=" ? 2 : 1;
    }
    token_ = upperCase(statement_.substr(start_, end_ - start_));
  }

  // Two quotes in a row stand for one.
  void quotedText() {
    token_ = '\'';
    for (++end_; end_ < statement_.size(); token_ += statement_[end_++]) {
      if (statement_[end_] != '\'') continue;
      if (++end_ == statement_.size() || statement_[end_] != '\'') return;
    }
    fail("ORA-01756: quoted string not properly terminated");
  }

  bool take(std::string_view word) {
    if (token_ != word) return false;
    advance();
    return true;
  }

  void expect(std::string_view word, const char* error) {
    if (!take(word)) fail(error);
  }

  std::string takeText(const char* error) {
    if (!token_.starts_with('\'')) fail(error);
    const std::string text = token_.substr(1);
    advance();
    return text;
  }

  void expectColumn(std::string_view wanted) {
    if (token_.empty() || !isWordCharacter(token_.front())) fail("ORA-00936: missing expression");
    expect(wanted, ("ORA-00904: \"" + token_ + "\": invalid identifier").c_str());
  }

  void expectEnd() const {
    if (!token_.empty()) fail("ORA-00933: SQL command not properly ended");
  }

  SetDateFormat alter() {
    expect("SESSION", "ORA-00940: invalid ALTER command");
    expect("SET", "ORA-00940: invalid ALTER command");
    expect("NLS_DATE_FORMAT", "ORA-02248: invalid option for ALTER SESSION");
    expect("=", "ORA-00927: missing equal sign");
    const std::string format = takeText("ORA-02248: invalid option for ALTER SESSION");
    expectEnd();
    return {format};
  }

  SelectHandles select() {
    expectColumn("HANDLE");
    expect("FROM", "ORA-00923: FROM keyword not found where expected");
    const bool isKnown = (token_ == "RC_BACKUP_PIECE" && kind_ != CatalogKind::kTarget) ||
                         (token_ == "V$BACKUP_PIECE" && kind_ != CatalogKind::kRecovery);
    if (!isKnown) fail("ORA-00942: table or view does not exist");
    advance();
    SelectHandles bounds;
    if (take("WHERE")) {
      do {
        condition(bounds);
      } while (take("AND"));
    }
    expectEnd();
    return bounds;
  }

  void condition(SelectHandles& bounds) {
    expectColumn("COMPLETION_TIME");
    const bool isLower = take(">=");
    if (!isLower) expect("<=", "ORA-00920: invalid relational operator");
    const std::size_t place = start_;
    const std::string text = takeText("ORA-00936: missing expression");
    try {
      const Stamp moment = parseOracleDate(text, dateFormat_);
      if (isLower) bounds.earliest = std::max(bounds.earliest, moment);
      if (!isLower) bounds.latest = std::min(bounds.latest, moment);
    } catch (const OracleError& error) {
      throw SqlError{error.text, place};
    }
  }

  std::string_view statement_;
  std::size_t start_ = 0, end_ = 0;  // of the token
  std::string token_;
  CatalogKind kind_;
  std::string_view dateFormat_;
};

}  // namespace

std::variant<SelectHandles, SetDateFormat> parseStatement(std::string_view statement,
                                                          CatalogKind kind,
                                                          std::string_view dateFormat) {
  return Parser(statement, kind, dateFormat).parse();
}

}  // namespace sandbox
