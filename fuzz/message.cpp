// message.cpp: message texts, as an edited catalog may hold them, with inserts of every kind.
#include "common/nls/render.h"
#include "fuzz/fuzz.h"

void fuzz::check(const std::string& input, char*) {
  const nls::Insert inserts[] = {"%s%n", 'c', -42, UINT64_MAX, std::string_view(), INT64_MIN, 255u};
  const std::string before = "before ";
  std::string out = before;
  const bool rendered = nls::render(input, inserts, out);
  hold(rendered || out == before, "a refused text leaves no trace");
  hold(input.find('%') != input.npos || out == before + input, "a plain text is itself");
}
