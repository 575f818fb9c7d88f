// statement.cpp: the few SQL statements that sqlplus understands here.
#include "sandbox/sqlplus/statement.h"

#include <algorithm>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

enum class Kind { kWord, kText, kSymbol, kEnd };

struct Token {
  Kind kind;
  std::string text;  // of a kText: without its quotes
  std::size_t line, column;
};

struct View {
  std::string_view name;
  CatalogKind kind;
};

constexpr View kViews[] = {{"RC_BACKUP_PIECE", CatalogKind::kRecovery},
                           {"V$BACKUP_PIECE", CatalogKind::kTarget}};

[[noreturn]] void fail(const Token& at, std::string text) {
  throw SqlError{std::move(text), at.line, at.column};
}

bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '$' || c == '#' || c == '.';
}

// The quoted text that begins at `column`; two quotes in a row stand for one.
Token textToken(std::string_view text, std::size_t line, std::size_t& column) {
  Token token{Kind::kText, "", line, column};
  for (++column; column < text.size(); ++column) {
    if (text[column] == '\'') {
      if (column + 1 >= text.size() || text[column + 1] != '\'') {
        ++column;
        return token;
      }
      ++column;
    }
    token.text += text[column];
  }
  fail(token, "ORA-01756: quoted string not properly terminated");
}

Token wordOrSymbol(std::string_view text, std::size_t line, std::size_t& column) {
  const std::size_t start = column;
  while (column < text.size() && isWordCharacter(text[column])) ++column;
  if (column > start)
    return {Kind::kWord, upperCase(text.substr(start, column - start)), line, start};
  const std::string_view two = text.substr(start, 2);
  column += two == ">=" || two == "<=" || two == "<>" || two == "!=" ? 2 : 1;
  return {Kind::kSymbol, std::string(text.substr(start, column - start)), line, start};
}

std::vector<Token> tokenize(const std::vector<std::string>& lines) {
  std::vector<Token> tokens;
  for (std::size_t line = 0; line < lines.size(); ++line) {
    const std::string& text = lines[line];
    for (std::size_t column = 0; column < text.size();) {
      if (text[column] == ' ' || text[column] == '\t')
        ++column;
      else if (text[column] == '\'')
        tokens.push_back(textToken(text, line, column));
      else
        tokens.push_back(wordOrSymbol(text, line, column));
    }
  }
  // Errors at the end are marked at the last token's place.
  const std::size_t line = tokens.empty() ? 0 : tokens.back().line;
  tokens.push_back({Kind::kEnd, "", line, tokens.empty() ? 0 : tokens.back().column});
  return tokens;
}

class Parser {
 public:
  Parser(std::vector<Token> tokens, CatalogKind kind, std::string_view dateFormat)
      : tokens_(std::move(tokens)), kind_(kind), dateFormat_(dateFormat) {}

  std::variant<SelectHandles, SetDateFormat> statement() {
    if (take("SELECT")) return select();
    if (take("ALTER")) return alter();
    fail(current(), "ORA-00900: invalid SQL statement");
  }

 private:
  const Token& current() const { return tokens_[position_]; }

  bool at(Kind kind, std::string_view text) const {
    return current().kind == kind && current().text == text;
  }

  bool take(std::string_view word) {
    if (!at(Kind::kWord, word) && !at(Kind::kSymbol, word)) return false;
    ++position_;
    return true;
  }

  Token next() {
    Token token = current();
    if (token.kind != Kind::kEnd) ++position_;
    return token;
  }

  void expectEnd() {
    if (current().kind != Kind::kEnd) fail(current(), "ORA-00933: SQL command not properly ended");
  }

  SetDateFormat alter() {
    if (!take("SESSION") || !take("SET")) fail(current(), "ORA-00940: invalid ALTER command");
    if (!take("NLS_DATE_FORMAT")) fail(current(), "ORA-02248: invalid option for ALTER SESSION");
    if (!take("=")) fail(current(), "ORA-00927: missing equal sign");
    const Token format = next();
    if (format.kind != Kind::kText) fail(format, "ORA-02248: invalid option for ALTER SESSION");
    expectEnd();
    return {format.text};
  }

  SelectHandles select() {
    const Token column = next();
    if (column.kind != Kind::kWord) fail(column, "ORA-00936: missing expression");
    if (!take("FROM")) fail(current(), "ORA-00923: FROM keyword not found where expected");
    requireView(next());
    requireColumn(column, "HANDLE");
    SelectHandles bounds;
    if (take("WHERE")) {
      do {
        condition(bounds);
      } while (take("AND"));
    }
    expectEnd();
    return bounds;
  }

  void requireView(const Token& name) {
    if (name.kind != Kind::kWord) fail(name, "ORA-00903: invalid table name");
    for (const View& view : kViews) {
      const auto has = static_cast<int>(kind_) & static_cast<int>(view.kind);
      if (name.text == view.name && has != 0) return;
    }
    fail(name, "ORA-00942: table or view does not exist");
  }

  static void requireColumn(const Token& name, std::string_view wanted) {
    if (name.kind != Kind::kWord) fail(name, "ORA-00936: missing expression");
    if (name.text != wanted) fail(name, "ORA-00904: \"" + name.text + "\": invalid identifier");
  }

  void condition(SelectHandles& bounds) {
    requireColumn(next(), "COMPLETION_TIME");
    const Token relation = next();
    const Token literal = next();
    if (relation.kind != Kind::kSymbol) fail(relation, "ORA-00920: invalid relational operator");
    if (literal.kind != Kind::kText) fail(literal, "ORA-00936: missing expression");
    const Stamp moment = dateOf(literal);
    // Moments are whole seconds, so the next smaller or larger number serves as an open bound.
    if (relation.text == ">=" || relation.text == "=")
      raise(bounds.earliest, moment);
    else if (relation.text == ">")
      raise(bounds.earliest, moment + 1);
    if (relation.text == "<=" || relation.text == "=")
      lower(bounds.latest, moment);
    else if (relation.text == "<")
      lower(bounds.latest, moment - 1);
    if (relation.text.find_first_not_of("<>=") != std::string::npos || relation.text == "<>")
      fail(relation, "ORA-00920: invalid relational operator");
  }

  static void raise(Stamp& bound, Stamp moment) { bound = std::max(bound, moment); }
  static void lower(Stamp& bound, Stamp moment) { bound = std::min(bound, moment); }

  Stamp dateOf(const Token& literal) const {
    try {
      return parseOracleDate(literal.text, dateFormat_);
    } catch (const OracleError& error) {
      fail(literal, error.text);
    }
  }

  std::vector<Token> tokens_;
  std::size_t position_ = 0;
  CatalogKind kind_;
  std::string_view dateFormat_;
};

}  // namespace

std::variant<SelectHandles, SetDateFormat> parseStatement(const std::vector<std::string>& lines,
                                                          CatalogKind kind,
                                                          std::string_view dateFormat) {
  return Parser(tokenize(lines), kind, dateFormat).statement();
}

}  // namespace sandbox
