// traceformat.h: printf for trace lines, whose text inserts come from elsewhere.
//
// Object names, options and server texts reach the trace. Shown as they are, one of them could
// clear the screen of a trace to STDERR, or end its line and fake the next one. Only the format
// decides about line ends.
#ifndef COMMON_UT_TRACEFORMAT_H
#define COMMON_UT_TRACEFORMAT_H

#include <cstdarg>
#include <cstddef>

namespace ut {

enum class LineEnds {
  kOfTheFormat,  // an insert is made printable, line ends included
  kOfTheInserts  // line ends of inserts are kept: for texts that the program has put together
};

// Writes a format and its arguments into `out`, as vsnprintf does, terminated and cut if need be,
// with text and character inserts made printable (see printable.h). Returns the length without the
// cut, or more than `size` if that is not known. Never allocates.
std::size_t formatTrace(char* out, std::size_t size, LineEnds lineEnds, const char* format,
                        std::va_list arguments) __attribute__((format(printf, 4, 0)));

}  // namespace ut

#endif  // COMMON_UT_TRACEFORMAT_H
