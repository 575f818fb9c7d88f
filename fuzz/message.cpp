// message.cpp: message texts with inserts of every kind. A text that is a single conversion is
// judged by the C library's printf.
#include <array>
#include <cstdint>

#include "common/nls/render.h"
#include "fuzz/fuzz.h"

namespace {

using fuzz::hold;

// Renders one conversion and compares it with what printf makes of it; `length` is the modifier
// that printf needs for a value of this type.
template <typename Value>
void compare(const std::string& conversion, const char* length, Value value) {
  std::string rendered;
  if (!nls::render(conversion, std::array{nls::Insert(value)}, rendered)) return;
  std::string format = conversion;
  format.insert(format.size() - 1, length);
  char expected[2048];
  std::snprintf(expected, sizeof expected, format.c_str(), value);
  hold(rendered == expected, "a conversion gives what printf gives");
}

// Does nothing with a text that is more than one conversion.
void compareWithPrintf(const std::string& conversion) {
  const std::size_t end = conversion.find_first_not_of("-0#123456789.", 1);
  if (conversion[0] != '%' || end + 1 != conversion.size()) return;
  const char kind = conversion.back();
  if (kind == 's') compare(conversion, "", "a text");
  if (conversion.find('.') != conversion.npos) return;  // only texts take a precision
  if (kind == 'c') compare(conversion, "", 'x');
  if (kind == 'd' || kind == 'i') compare(conversion, "ll", -4711LL);
  if (kind == 'u' || kind == 'x' || kind == 'X') compare(conversion, "ll", 0xbeefULL);
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  const nls::Insert inserts[] = {"%s%n", 'c', -42, UINT64_MAX, std::string_view(), INT64_MIN, 255u};
  const std::string before = "before ";
  std::string out = before;
  const bool rendered = nls::render(input, inserts, out);
  hold(rendered || out == before, "a refused text leaves no trace");
  hold(input.find('%') != input.npos || out == before + input, "a plain text is itself");
  compareWithPrintf(input);
}
