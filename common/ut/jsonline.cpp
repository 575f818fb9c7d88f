// jsonline.cpp: one JSON object in one line, see jsonline.h.
#include "common/ut/jsonline.h"

#include <cstdio>
#include <utility>

#include "common/ut/utf8.h"

namespace {

void appendHex(unsigned value, int digits, std::string& out) {
  char text[8];
  std::snprintf(text, sizeof text, "%0*x", digits, value);
  out += text;
}

// Whether a text is the same in JSON.
bool isPlain(std::string_view text) {
  unsigned special = 0;  // no early end, as in isAscii
  for (const char c : text) {
    special |= static_cast<unsigned>(c < ' ' || c > '~' || c == '"' || c == '\\');
  }
  return special == 0;
}

// The text between quotes, by the rules of JSON; "?" for bytes that are not UTF-8.
void appendQuoted(std::string_view text, std::string& out) {
  out += '"';
  while (!text.empty()) {
    const ut::Utf8Character next = ut::firstCharacter(text);
    if (!next.valid) {
      out += '?';
    } else if (next.value < 0x20 || next.value == 0x7F) {
      out += "\\u";
      appendHex(next.value, 4, out);
    } else {
      if (text.front() == '"' || text.front() == '\\') out += '\\';
      out += text.substr(0, next.length);
    }
    text.remove_prefix(next.length);
  }
  out += '"';
}

}  // namespace

void ut::JsonLine::begin(std::string_view name) {
  line_ += line_.empty() ? '{' : ',';
  line_.append("\"").append(name).append("\":");
}

ut::JsonLine& ut::JsonLine::text(std::string_view name, std::string_view value) {
  begin(name);
  if (isPlain(value)) {  // nearly all: names of objects are written by the thousand
    line_.append("\"").append(value).append("\"");
    return *this;
  }
  appendQuoted(value, line_);
  if (isUtf8(value)) return *this;
  begin(std::string(name) + "Bytes");
  line_ += '"';
  for (const char byte : value) appendHex(static_cast<unsigned char>(byte), 2, line_);
  line_ += '"';
  return *this;
}

ut::JsonLine& ut::JsonLine::number(std::string_view name, std::uint64_t value) {
  begin(name);
  line_ += std::to_string(value);
  return *this;
}

ut::JsonLine& ut::JsonLine::signedNumber(std::string_view name, std::int64_t value) {
  begin(name);
  line_ += std::to_string(value);
  return *this;
}

ut::JsonLine& ut::JsonLine::flag(std::string_view name, bool value) {
  begin(name);
  line_ += value ? "true" : "false";
  return *this;
}

std::string ut::JsonLine::finish() {
  std::string result = line_.empty() ? "{" : std::move(line_);
  line_.clear();
  return result += "}\n";
}
