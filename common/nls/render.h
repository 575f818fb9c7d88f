// render.h: message texts with typed inserts.
//
// A message text comes from a catalog file that anybody may have edited, so it never reaches
// printf. This renderer takes the inserts with their kinds, and a conversion that does not fit its
// insert, or has none, makes the whole text unusable instead of reading what is not there.
//
// Conversions are printf's: %s for texts, %c for characters, %d %i %u %x %X for whole numbers of
// any width, with the flags "-", "0" and "#", a field width, a precision for %s, and length letters
// that are ignored; "%2$s" takes the second insert; "%%" is a percent sign. Inserts that the text
// does not use are allowed: a translation may leave one out.
//
// Inserts are foreign text: what a terminal would obey is shown as "?" (see printable.h). The
// message's own text is copied unchanged, line ends included.
#ifndef COMMON_NLS_RENDER_H
#define COMMON_NLS_RENDER_H

#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace nls {

// One insert of a message. It refers to the caller's text and must not outlive it.
class Insert {
 public:
  enum class Kind { kText, kCharacter, kSigned, kUnsigned };

  Insert(const char* text) : kind_(Kind::kText), text_(text == nullptr ? "" : text) {}
  Insert(std::string_view text) : kind_(Kind::kText), text_(text) {}
  Insert(const std::string& text) : kind_(Kind::kText), text_(text) {}
  Insert(char character)
      : kind_(Kind::kCharacter), number_(static_cast<unsigned char>(character)) {}
  template <std::signed_integral T>
  requires(!std::same_as<T, char>) Insert(T number)
      : kind_(Kind::kSigned), number_(static_cast<std::uint64_t>(number)) {}
  template <std::unsigned_integral T>
  requires(!std::same_as<T, char> && !std::same_as<T, bool>) Insert(T number)
      : kind_(Kind::kUnsigned), number_(number) {}
  template <std::same_as<bool> T>
  Insert(T truth) = delete;  // it would become a character

  Kind kind() const { return kind_; }
  std::string_view text() const { return text_; }
  std::uint64_t number() const { return number_; }

 private:
  Kind kind_;
  std::string_view text_;
  std::uint64_t number_ = 0;  // a signed one in two's complement
};

// Appends `text` with its conversions replaced to `out`. False when a conversion has no insert or
// does not fit it, or is not one of the above; `out` is then unchanged.
[[nodiscard]] bool render(std::string_view text, std::span<const Insert> inserts, std::string& out);

}  // namespace nls

#endif  // COMMON_NLS_RENDER_H
