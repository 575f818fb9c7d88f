// render.cpp: message texts with typed inserts, see render.h.
#include "common/nls/render.h"

#include <charconv>

#include "common/ut/ascii.h"
#include "common/ut/printable.h"

namespace nls {
namespace {

constexpr std::size_t kMaxWidth = 1024;  // no message of ours has a wider field

struct Conversion {
  std::size_t position = 0;  // of the insert, from 1; 0: the next one
  bool left = false;
  bool zero = false;
  bool alternate = false;
  std::size_t width = 0;
  std::size_t precision = std::string_view::npos;
  char letter = 0;
};

// Reads one conversion after its "%", bounded by the end of the text:
//
//   [POSITION$] [FLAGS] [WIDTH] [.PRECISION] [LENGTH LETTERS] LETTER
//
// Digits are a position only if "$" follows; otherwise they are flags and a width.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  bool scan(Conversion* result) {
    if (!takePosition(result)) return false;
    for (; !rest_.empty() && takeFlag(rest_.front(), result); rest_.remove_prefix(1)) {
    }
    if (!takeNumber(&result->width)) return false;
    if (!rest_.empty() && rest_.front() == '.') {
      rest_.remove_prefix(1);
      result->precision = 0;
      if (!takeNumber(&result->precision)) return false;
    }
    while (!rest_.empty() && std::string_view("hlzjt").find(rest_.front()) != rest_.npos) {
      rest_.remove_prefix(1);
    }
    if (rest_.empty()) return false;
    result->letter = rest_.front();
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view rest() const { return rest_; }

 private:
  bool takePosition(Conversion* result) {
    std::size_t digits = 0;
    while (digits < rest_.size() && ut::isDigit(rest_[digits])) ++digits;
    if (digits == 0 || digits == rest_.size() || rest_[digits] != '$') return true;
    if (!takeNumber(&result->position) || result->position == 0) return false;
    rest_.remove_prefix(1);
    return true;
  }

  static bool takeFlag(char c, Conversion* result) {
    if (c == '-') result->left = true;
    if (c == '0') result->zero = true;
    if (c == '#') result->alternate = true;
    return c == '-' || c == '0' || c == '#';
  }

  // The value is 0, and stays so without digits.
  bool takeNumber(std::size_t* value) {
    for (; !rest_.empty() && ut::isDigit(rest_.front()); rest_.remove_prefix(1)) {
      *value = *value * 10 + static_cast<std::size_t>(rest_.front() - '0');
      if (*value > kMaxWidth) return false;
    }
    return true;
  }

  std::string_view rest_;
};

bool fits(char letter, Insert::Kind kind) {
  switch (letter) {
    case 's':
      return kind == Insert::Kind::kText;
    case 'c':
      return kind == Insert::Kind::kCharacter;
    case 'd':
    case 'i':
    case 'u':
    case 'x':
    case 'X':
      return kind == Insert::Kind::kSigned || kind == Insert::Kind::kUnsigned;
    default:
      return false;
  }
}

// Blanks fill a field in front of the sign or, with "-", after the body; zeros after the sign.
void pad(std::string_view sign, std::string_view body, const Conversion& how, std::string& out) {
  const std::size_t length = sign.size() + body.size();
  const std::size_t fill = how.width > length ? how.width - length : 0;
  const bool zeros = how.zero && !how.left && how.letter != 's' && how.letter != 'c';
  if (!how.left && !zeros) out.append(fill, ' ');
  out += sign;
  if (zeros) out.append(fill, '0');
  out += body;
  if (how.left) out.append(fill, ' ');
}

void putNumber(const Insert& insert, const Conversion& how, std::string& out) {
  const bool hex = how.letter == 'x' || how.letter == 'X';
  std::uint64_t number = insert.number();
  std::string_view sign;
  if (hex && how.alternate && number != 0) {
    sign = how.letter == 'x' ? "0x" : "0X";
  } else if (!hex && insert.kind() == Insert::Kind::kSigned && (number >> 63) != 0) {
    sign = "-";
    number = ~number + 1;
  }
  char digits[24] = "";
  const auto end = std::to_chars(digits, digits + sizeof digits, number, hex ? 16 : 10).ptr;
  if (how.letter == 'X') ut::upperCase(digits);
  pad(sign, std::string_view(digits, static_cast<std::size_t>(end - digits)), how, out);
}

void put(const Insert& insert, const Conversion& how, std::string& out) {
  if (insert.kind() == Insert::Kind::kText) {
    pad("", ut::printable(insert.text().substr(0, how.precision)), how, out);
  } else if (insert.kind() == Insert::Kind::kCharacter) {
    const char character = static_cast<char>(insert.number());
    pad("", std::string_view(&character, 1), how, out);
  } else {
    putNumber(insert, how, out);
  }
}

}  // namespace

bool render(std::string_view text, std::span<const Insert> inserts, std::string& out) {
  std::string result;  // a later conversion may fail, and `out` must then be unchanged
  std::size_t next = 0;
  while (!text.empty()) {
    const std::size_t percent = text.find('%');
    result += text.substr(0, percent);
    if (percent == text.npos) break;
    text.remove_prefix(percent + 1);
    if (!text.empty() && text.front() == '%') {
      result += '%';
      text.remove_prefix(1);
      continue;
    }
    Conversion how;
    Scanner scanner(text);
    if (!scanner.scan(&how)) return false;
    text = scanner.rest();
    const std::size_t index = how.position == 0 ? next++ : how.position - 1;
    if (index >= inserts.size() || !fits(how.letter, inserts[index].kind())) return false;
    put(inserts[index], how, result);
  }
  out += result;
  return true;
}

}  // namespace nls
