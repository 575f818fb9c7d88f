// output.h: where sqlplus writes: the terminal and, while spooling, a file.
//
// Messages are written to both as they are. Rows fill the line size: a longer value continues in
// the next line, a shorter one is padded with blanks. Trailing blanks are kept in the spool file
// and dropped on the terminal: TRIMSPOOL OFF and TRIMOUT ON are the tool's defaults.
#ifndef SANDBOX_SQLPLUS_OUTPUT_H
#define SANDBOX_SQLPLUS_OUTPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "sandbox/sqlplus/settings.h"

namespace sandbox {

class Output {
 public:
  explicit Output(const Settings& settings) : settings_(settings) {}

  // False if the file cannot be made. Ends the spooling before it in either case.
  bool startSpool(const std::string& path);
  // False if the file could not be written completely.
  bool stopSpool();

  // `text` with a line end.
  void line(std::string_view text = "");

  // The rows of one query with one column; startRows() before the first, none is allowed.
  void startRows() { linesOnPage_ = 0; }
  void row(std::string_view value);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void startPage();
  void rowLine(std::string_view piece);

  const Settings& settings_;
  std::unique_ptr<std::FILE, Closer> spool_;
  std::int64_t linesOnPage_ = 0;  // 0: no page is open
  std::string buffer_;
};

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_OUTPUT_H
