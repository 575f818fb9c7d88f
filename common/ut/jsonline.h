// jsonline.h: one JSON object in one line, for logs that programs read (JSON Lines).
//
//   ut::JsonLine line;
//   line.text("node", node).number("size", size);
//   append(line.finish());        {"node":"ORANODE","size":42}
//
// A line is UTF-8. A text that is not is written twice: under its name with "?" for the invalid
// bytes, and whole, each byte as two hexadecimal digits, under its name with "Bytes" appended.
#ifndef COMMON_UT_JSONLINE_H
#define COMMON_UT_JSONLINE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace ut {

class JsonLine {
 public:
  // Members, in the order of the calls. Names are plain ASCII. All throw std::bad_alloc.
  JsonLine& text(std::string_view name, std::string_view value);
  JsonLine& number(std::string_view name, std::uint64_t value);
  JsonLine& signedNumber(std::string_view name, std::int64_t value);
  JsonLine& flag(std::string_view name, bool value);

  // The whole line with its line end. The object is then empty again.
  std::string finish();

 private:
  void begin(std::string_view name);

  std::string line_;
};

}  // namespace ut

#endif  // COMMON_UT_JSONLINE_H
