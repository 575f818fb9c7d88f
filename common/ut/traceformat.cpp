// traceformat.cpp: printf for trace lines, see traceformat.h.
//
// Each conversion is written by itself, with its own flags, width and precision; texts are made
// printable first. The compiler has checked every format against its arguments.
#include "common/ut/traceformat.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "common/ut/printable.h"

namespace {

using ut::LineEnds;

constexpr std::size_t kConversionSize = 48;
constexpr std::size_t kNumberSize =
    512;  // the widest that a format asks for, and the largest double

// va_list may be an array type, which cannot be passed by reference.
struct Arguments {
  std::va_list list;
};

// The line so far. What does not fit is dropped, and counted.
class Line {
 public:
  Line(char* out, std::size_t size) : out_(out), size_(size) {}

  void add(std::string_view text) {
    if (length_ < size_) {
      const std::size_t room = size_ - length_;
      std::memcpy(out_ + length_, text.data(), text.size() < room ? text.size() : room);
    }
    length_ += text.size();
  }
  bool full() const { return length_ >= size_; }
  std::size_t end() {
    if (size_ > 0) out_[length_ < size_ ? length_ : size_ - 1] = '\0';
    return length_;
  }

 private:
  char* const out_;
  const std::size_t size_;
  std::size_t length_ = 0;
};

// One conversion of a format: "%-20s", "%08ld". The length modifier is kept apart.
struct Conversion {
  char text[kConversionSize] = "%";  // up to the modifier
  char modifier[3] = "";
  char letter = '\0';

  void add(const char* more) {
    std::strncat(text, more, sizeof text - std::strlen(text) - 8);  // room for modifier and letter
  }
  const char* whole(const char* newModifier) {
    std::snprintf(text + std::strlen(text), sizeof text - std::strlen(text), "%s%c", newModifier,
                  letter);
    return text;
  }
};

// Takes a conversion apart, from after its "%". A "*" becomes the number that is given for it.
// Returns where the format goes on.
const char* parse(const char* format, Arguments& arguments, Conversion* conversion) {
  for (; *format != '\0' && std::strchr("-+ #0123456789.*", *format) != nullptr; ++format) {
    char part[16] = {*format, '\0'};
    if (*format == '*') std::snprintf(part, sizeof part, "%d", va_arg(arguments.list, int));
    conversion->add(part);
  }
  for (std::size_t i = 0; *format != '\0' && std::strchr("hlzjt", *format) != nullptr; ++format) {
    if (i < 2) conversion->modifier[i++] = *format;
  }
  conversion->letter = *format;
  return *format == '\0' ? format : format + 1;
}

template <typename Value>
void addValue(Line& line, Conversion& conversion, const char* modifier, Value value) {
  char number[kNumberSize];
  const int length = std::snprintf(number, sizeof number, conversion.whole(modifier), value);
  if (length > 0) line.add({number, std::min(static_cast<std::size_t>(length), sizeof number - 1)});
}

void addInteger(Line& line, Conversion& conversion, Arguments& arguments) {
  const std::string_view modifier(conversion.modifier);
  if (modifier.empty() || modifier.starts_with('h')) {
    addValue(line, conversion, conversion.modifier, va_arg(arguments.list, int));
  } else if (modifier == "l" || modifier == "z" || modifier == "t") {
    addValue(line, conversion, "l", va_arg(arguments.list, long));
  } else {
    addValue(line, conversion, "ll", va_arg(arguments.list, long long));
  }
}

// A text: its precision first, which may stand for a missing terminator, then its width.
void addText(Line& line, const Conversion& conversion, const char* text, LineEnds lineEnds) {
  const char* point = std::strchr(conversion.text, '.');
  const std::size_t most = point == nullptr ? SIZE_MAX : std::strtoul(point + 1, nullptr, 10);
  std::string_view rest(text, ::strnlen(text, most));
  const bool left = conversion.text[1] == '-';
  const std::size_t width = std::strtoul(conversion.text + (left ? 2 : 1), nullptr, 10);
  const std::size_t padding = width > rest.size() ? width - rest.size() : 0;
  for (std::size_t i = 0; !left && i < padding && !line.full(); ++i) line.add(" ");
  const auto add = [&line](std::string_view part) { line.add(part); };
  while (!rest.empty() && !line.full()) {
    const std::size_t end = lineEnds == LineEnds::kOfTheInserts ? rest.find('\n') : rest.npos;
    ut::forEachPrintable(rest.substr(0, end), add);
    if (end == rest.npos) break;
    line.add("\n");
    rest.remove_prefix(end + 1);
  }
  for (std::size_t i = 0; left && i < padding && !line.full(); ++i) line.add(" ");
}

void addConversion(Line& line, Conversion& conversion, Arguments& arguments, LineEnds lineEnds) {
  switch (conversion.letter) {
    case 's': {
      const char* text = va_arg(arguments.list, const char*);
      addText(line, conversion, text == nullptr ? "(null)" : text, lineEnds);
      break;
    }
    case 'c': {
      const char text[] = {static_cast<char>(va_arg(arguments.list, int)), '\0'};
      addText(line, conversion, *text == '\0' ? "?" : text, LineEnds::kOfTheFormat);
      break;
    }
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
    case 'o':
      addInteger(line, conversion, arguments);
      break;
    case 'p':
      addValue(line, conversion, "", va_arg(arguments.list, void*));
      break;
    default:  // e, f, g and a; "%%" is handled by the caller, and no line uses anything else
      addValue(line, conversion, "", va_arg(arguments.list, double));
  }
}

}  // namespace

std::size_t ut::formatTrace(char* out, std::size_t size, LineEnds lineEnds, const char* format,
                            std::va_list arguments) {
  Line line(out, size);
  Arguments rest;
  va_copy(rest.list, arguments);
  while (*format != '\0' && !line.full()) {
    const std::size_t plain = std::strcspn(format, "%");
    line.add({format, plain});
    format += plain;
    if (*format == '\0') break;
    if (format[1] == '%') {
      line.add("%");
      format += 2;
      continue;
    }
    Conversion conversion;
    format = parse(format + 1, rest, &conversion);
    addConversion(line, conversion, rest, lineEnds);
  }
  va_end(rest.list);
  return line.end();
}
