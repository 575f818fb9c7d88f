// output.h: where sqlplus writes: the terminal and, while spooling, a file.
//
// Messages go to both as they are. Rows are laid out to the line size: a value that is longer goes
// on in the next line, a shorter one is filled with blanks. The blanks at the end of a line are
// kept in the spool file and dropped on the terminal, as the settings TRIMSPOOL OFF and TRIMOUT ON
// say, which are the tool's defaults.
#ifndef SANDBOX_SQLPLUS_OUTPUT_H
#define SANDBOX_SQLPLUS_OUTPUT_H

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace sandbox {

enum class RecordSeparator {
  kWrapped,  // a blank line after each row that took more than one line
  kEach,     // after every row
  kOff,
};

struct Layout {
  std::int64_t lineSize = 80;
  std::int64_t pageSize = 14;  // lines; 0: no pages and no headings
  bool heading = true;
  bool trimSpool = false;
  RecordSeparator separator = RecordSeparator::kWrapped;
};

class Output {
 public:
  // Whether the terminal sees anything; the spool file always does.
  void showOnTerminal(bool show) { terminalOn_ = show; }

  // False when the file cannot be made. Ends the spooling before it in either case.
  bool startSpool(const std::string& path);
  // False when the file could not be written completely.
  bool stopSpool();

  // `text` with a line end.
  void line(std::string_view text = "");

  // The rows of one query with one column; startRows() before the first, none is allowed.
  void startRows(const Layout& layout, std::string_view heading, std::int64_t columnWidth);
  void row(std::string_view value);

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  void startPage();
  void rowLine(std::string_view piece);

  bool terminalOn_ = true;
  std::unique_ptr<std::FILE, Closer> spool_;
  Layout layout_;
  std::string heading_;
  std::size_t width_ = 0;         // of the column, at most a line
  std::int64_t linesOnPage_ = 0;  // 0: no page is open
  std::string buffer_;
};

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_OUTPUT_H
