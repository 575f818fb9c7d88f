// message.cpp: message texts with inserts of all kinds; the C library's printf judges a text that
// is one conversion.
#include "common/nls/render.h"
#include "fuzz/fuzz.h"

static void compare(std::string text, const char* length, auto value) {
  std::string out;
  if (!nls::render(text, std::array{nls::Insert(value)}, out)) return;
  char expected[2048];
  std::snprintf(expected, sizeof expected, text.insert(text.size() - 1, length).c_str(), value);
  fuzz::hold(out == expected, "a conversion gives what printf gives");
}

void fuzz::check(const std::string& input, char*) {
  const nls::Insert all[] = {"%s%n", 'c', -42, UINT64_MAX, std::string_view(), INT64_MIN, 255u};
  std::string out = "before ";
  hold(nls::render(input, all, out) || out == "before ", "a refused text leaves no trace");
  hold(input.find('%') != input.npos || out == "before " + input, "a text is itself");
  if (input.find_first_not_of("-0#123456789.", 1) + 1 != input.size() || input[0] != '%') return;
  if (input.back() == 's') compare(input, "", "a text");
  if (input.find('.') != input.npos) return;  // a precision is for texts
  if (input.back() == 'c') compare(input, "", 'x');
  if (std::strchr("di", input.back())) compare(input, "ll", -4711LL);
  if (std::strchr("uxX", input.back())) compare(input, "ll", 0xbeefULL);
}
