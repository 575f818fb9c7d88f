// statement.cpp: the SQL statements that sqlplus understands here.
#include "sandbox/sqlplus/statement.h"

#include <algorithm>
#include <regex>

#include "sandbox/sqlplus/oracle_date.h"

namespace sandbox {
namespace {

// Reads a statement from left to right, by patterns.
class Reader {
 public:
  explicit Reader(std::string_view statement) : statement_(statement) {}

  // Takes what comes next, without the blanks before it, if the pattern describes it. Its first
  // group is then taken().
  bool take(const char* pattern) {
    const std::size_t next = statement_.find_first_not_of(" \t\n", end_);
    if (next != std::string_view::npos) start_ = next;
    std::match_results<std::string_view::const_iterator> match;
    const auto from = statement_.begin() + static_cast<std::ptrdiff_t>(std::max(start_, end_));
    if (!std::regex_search(from, statement_.end(), match, std::regex(pattern, std::regex::icase),
                           std::regex_constants::match_continuous)) {
      return false;
    }
    taken_ = match.str(match.size() - 1);
    end_ = start_ + static_cast<std::size_t>(match.length());
    return true;
  }

  void expect(const char* pattern, const char* error) {
    if (!take(pattern)) fail(error);
  }

  const std::string& taken() const { return taken_; }

  // The error is marked at what was taken last, or at what could not be taken.
  [[noreturn]] void fail(const char* error) const { throw SqlError{error, start_}; }

 private:
  std::string_view statement_;
  std::size_t start_ = 0, end_ = 0;  // of what was taken last
  std::string taken_;
};

constexpr const char* kBadStatement = "ORA-00933: SQL command not properly ended";
constexpr const char* kText = "'([^']*)'";

SelectHandles readSelect(Reader& reader, CatalogKind kind, std::string_view dateFormat) {
  reader.expect("handle\\b", "ORA-00904: invalid identifier");
  reader.expect("from\\b", "ORA-00923: FROM keyword not found where expected");
  const bool isKnown = (kind != CatalogKind::kTarget && reader.take("rc_backup_piece\\b")) ||
                       (kind != CatalogKind::kRecovery && reader.take("v\\$backup_piece\\b"));
  if (!isKnown) reader.fail("ORA-00942: table or view does not exist");
  SelectHandles bounds;
  for (const char* word = "where\\b"; reader.take(word); word = "and\\b") {
    reader.expect("completion_time\\b", "ORA-00904: invalid identifier");
    reader.expect("([<>])=", "ORA-00920: invalid relational operator");
    const bool isEarliest = reader.taken() == ">";
    reader.expect(kText, "ORA-00936: missing expression");
    try {
      const Stamp moment = parseOracleDate(reader.taken(), dateFormat);
      Stamp& bound = isEarliest ? bounds.earliest : bounds.latest;
      bound = isEarliest ? std::max(bound, moment) : std::min(bound, moment);
    } catch (const OracleError& error) {
      reader.fail(error.text);
    }
  }
  reader.expect("\\s*$", kBadStatement);
  return bounds;
}

}  // namespace

std::variant<SelectHandles, SetDateFormat> parseStatement(std::string_view statement,
                                                          CatalogKind kind,
                                                          std::string_view dateFormat) {
  Reader reader(statement);
  if (reader.take("select\\b")) return readSelect(reader, kind, dateFormat);
  reader.expect("alter\\s+session\\s+set\\s+nls_date_format\\s*=",
                "ORA-02248: invalid option for ALTER SESSION");
  reader.expect(kText, kBadStatement);
  const SetDateFormat result{reader.taken()};
  reader.expect("\\s*$", kBadStatement);
  return result;
}

}  // namespace sandbox
