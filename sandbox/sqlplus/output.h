// output.h: where sqlplus writes: the terminal and, while spooling, a file.
//
// Messages are written to both as they are. Rows have one column, which is as wide as a line unless
// COLUMN says less. A longer value continues in the next line or is cut, a shorter one is padded
// with blanks to the end of the line. Trailing blanks are kept in the spool file and dropped on the
// terminal: TRIMSPOOL OFF and TRIMOUT ON are the tool's defaults. Under MARKUP CSV a row is a line,
// whatever its length.
#ifndef SANDBOX_SQLPLUS_OUTPUT_H
#define SANDBOX_SQLPLUS_OUTPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "sandbox/sqlplus/language.h"
#include "sandbox/sqlplus/settings.h"

namespace sandbox {

class Output {
 public:
  Output(const Settings& settings, const Language& language)
      : settings_(settings), language_(language) {}

  // False if the file cannot be made. Ends the spooling before it in either case.
  bool startSpool(const std::string& path);
  // False if the file could not be written completely.
  bool stopSpool();

  // `text` with a line end.
  void line(std::string_view text = "");

  // The rows of one query; startRows() before the first, none is allowed. Empty: a row without a
  // value.
  void startRows();
  void row(std::string_view value);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  Overflow overflow() const;
  void startPage();
  void rowLine(std::string_view piece);

  const Settings& settings_;
  const Language& language_;
  std::unique_ptr<std::FILE, Closer> spool_;
  std::size_t width_ = 0;         // of the column, in characters
  std::int64_t linesOnPage_ = 0;  // 0: no page is open
  std::string buffer_;
};

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_OUTPUT_H
