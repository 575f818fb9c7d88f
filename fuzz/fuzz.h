// fuzz.h: what the fuzz targets share. A target is one source and one program: it includes this
// header and defines fuzz::check, which hands an input to one parser and judges the result.
//
// Standard output is closed while fuzzing, and vexoerror.log in the build directory of the fuzz
// preset is a link to /dev/null, so that failures that inputs provoke are not reported.
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "common/ut/psfile.h"

namespace fuzz {

// Runs one input. `text` is the input with a terminator, in a block of exactly that size, so that
// the sanitizer notices a parser that reads past the end; it may be changed.
void check(const std::string& input, char* text);

// Ends the program, which makes the input a finding, unless `kept`; `what` is what should hold.
inline void hold(bool kept, const char* what) {
  if (kept) return;
  std::fprintf(stderr, "fuzz: does not hold: %s\n", what);
  std::abort();
}

// Writes a file of this process in TMPDIR and returns its path, the same one every time.
inline const char* plainFile(const std::string& bytes) {
  static const std::string path = ut::tempName("FUZZ");
  hold(bool(std::ofstream(path, std::ios::binary) << bytes), "a file can be written");
  return path.c_str();
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  std::vector<char> text(input.c_str(), input.c_str() + size + 1);
  fuzz::check(input, text.data());
  return 0;
}

#endif  // FUZZ_FUZZ_H
