// spoolline.h: what one line of a spool file is, and everything that it can mean as a handle.
//
// Both functions are pure. They bear any profile: glogin.sql and login.sql can change how sqlplus
// shows rows, and cannot be kept out.
#ifndef UTILITY_SPOOLLINE_H
#define UTILITY_SPOOLLINE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace utility {

inline constexpr std::size_t kSpoolWidth = 80;  // columns of a line, as the script sets them

enum class LineKind {
  kBlank,         // blanks only: between messages, or a piece without a handle
  kRow,           // one word, or a line that is padded to its full width
  kFullRow,       // a row without padding: the next line may continue it
  kRowCount,      // "12 rows selected."
  kConfirmation,  // "Session altered."
  kErrorHeading,  // "ERROR:", "ERROR at line 1:": the next line says what it is
  kWarning,       // "ORA-28002: ...": comes with a logon that succeeded
  kError,         // any other message of Oracle or its tools, or "rows will be truncated"
  kOther          // several words and not of full width: a profile's heading, "Elapsed: ..."
};

struct SpoolLine {
  LineKind kind;
  // Without its carriage return, and without the blanks at its end; kFullRow has none.
  std::string_view body;
  std::string_view text;    // the body without separators at both ends
  std::string_view word;    // the first word of the text
  bool carriageReturn;      // the line ended in one
  std::uint64_t count = 0;  // of kRowCount; UINT64_MAX for a number that cannot be read
};

// `line` has no line end. The parts refer to it.
SpoolLine classifyLine(std::string_view line);

// Appends everything that a text from a line can mean as a handle, without repetitions: itself;
// without the separators at its ends; its first word; without a pair of quotes around it.
void appendReadings(std::string_view body, std::vector<std::string>* readings);

}  // namespace utility

#endif  // UTILITY_SPOOLLINE_H
