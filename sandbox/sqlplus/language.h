// language.h: the language and the character set of the tool, which NLS_LANG chooses.
//
// NLS_LANG is LANGUAGE_TERRITORY.CHARSET, and each part may be missing. AMERICAN, GERMAN and FRENCH
// are known here, and the character sets AL32UTF8 and UTF8, WE8ISO8859P1, and US7ASCII. The catalog
// holds UTF-8. Without a character set nothing is converted.
#ifndef SANDBOX_SQLPLUS_LANGUAGE_H
#define SANDBOX_SQLPLUS_LANGUAGE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

// "#" is where a number belongs.
struct Texts {
  std::string_view name, noRows, oneRow, rows, altered, error, errorAtLine, elapsed;
};

class Language {
 public:
  // `nlsLang` is the variable's value. Throws OracleError if a part of it is not known.
  explicit Language(std::string_view nlsLang);

  const Texts& texts() const { return *texts_; }

  // A text in the character set, where letters that it lacks become "?". The result is `utf8`
  // itself or in `buffer`.
  std::string_view encoded(std::string_view utf8, std::string& buffer) const;
  // One of texts() with its number, encoded.
  std::string sentence(std::string_view text, std::int64_t number = 0) const;

  // How many characters a text has in the character set, and how many bytes its first ones take.
  std::size_t characters(std::string_view text) const;
  std::size_t bytes(std::string_view text, std::size_t characters) const;

 private:
  enum class CharacterSet { kUtf8, kLatin1, kAscii };

  const Texts* texts_;
  CharacterSet set_ = CharacterSet::kUtf8;
};

}  // namespace sandbox

#endif  // SANDBOX_SQLPLUS_LANGUAGE_H
