// report.h: how the commands report a failure: on the terminal, in the error log, or both.
#ifndef UTILITY_REPORT_H
#define UTILITY_REPORT_H

#include <cstdint>
#include <string>

#include "agent/orcctx.h"

namespace utility {

inline constexpr unsigned short kFailed = 65535;  // a command's own failure, -1

enum class Report { kLogOnly, kLogAndTerminal };

// Reports a code that a function of the storage client library returned: the library's text, or
// one of our own if it has none, goes to the error log, and to the terminal if wanted. Returns the
// text.
std::string reportCode(orcObj_t* orc, const char* function, std::int16_t rc, Report where);

// Prints a text of the program between blank lines.
void printFramed(const std::string& text);

// The same, and adds a line to the error log.
void reportText(const std::string& text);

}  // namespace utility

#endif  // UTILITY_REPORT_H
