// language.cpp: the language and the character set of the tool, which NLS_LANG chooses.
#include "sandbox/sqlplus/language.h"

#include <algorithm>

#include "sandbox/sqlplus/oracle_date.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr Texts kTexts[] = {
    {"AMERICAN", "no rows selected", "1 row selected.", "# rows selected.", "Session altered.",
     "ERROR:", "ERROR at line #:", "Elapsed: "},
    {"GERMAN", "Es wurden keine Zeilen ausgewählt", "1 Zeile ausgewählt.", "# Zeilen ausgewählt.",
     "Session geändert.", "FEHLER:", "FEHLER in Zeile #:", "Abgelaufen: "},
    {"FRENCH", "aucune ligne sélectionnée", "1 ligne sélectionnée.", "# lignes sélectionnées.",
     "Session modifiée.", "ERREUR :", "ERREUR à la ligne # :", "Ecoulé : "},
};

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

bool isAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

}  // namespace

Language::Language(std::string_view nlsLang) {
  const std::size_t dot = std::min(nlsLang.find('.'), nlsLang.size());
  const std::string language = upperCase(nlsLang.substr(0, std::min(nlsLang.find('_'), dot)));
  const std::string set = upperCase(nlsLang.substr(std::min(dot + 1, nlsLang.size())));
  const auto known =
      std::ranges::find(kTexts, language.empty() ? kTexts[0].name : language, &Texts::name);
  texts_ = known != std::end(kTexts) ? known : nullptr;
  if (set == "US7ASCII") {
    set_ = CharacterSet::kAscii;
  } else if (set == "WE8ISO8859P1") {
    set_ = CharacterSet::kLatin1;
  } else if (!set.empty() && set != "AL32UTF8" && set != "UTF8") {
    texts_ = nullptr;
  }
  if (texts_ == nullptr) {
    throw OracleError{"ORA-12705: Cannot access NLS data files or invalid environment specified"};
  }
}

std::string_view Language::encoded(std::string_view utf8, std::string& buffer) const {
  if (set_ == CharacterSet::kUtf8) return utf8;
  buffer.clear();
  for (std::size_t start = 0, end = 0; start < utf8.size(); start = end) {
    end = start + 1;
    while (!isAscii(utf8[start]) && end < utf8.size() && continuesCharacter(utf8[end])) ++end;
    const auto first = static_cast<unsigned char>(utf8[start]);
    const bool isLatin1 = end - start == 2 && (first == 0xC2 || first == 0xC3);
    if (isAscii(utf8[start])) {
      buffer += utf8[start];
    } else if (isLatin1 && set_ == CharacterSet::kLatin1) {
      buffer += static_cast<char>(utf8[start + 1] | (first & 1) << 6);
    } else {
      buffer += '?';
    }
  }
  return buffer;
}

std::string Language::sentence(std::string_view text, std::int64_t number) const {
  std::string full(text), buffer;
  if (const std::size_t at = full.find('#'); at != std::string::npos) {
    full.replace(at, 1, std::to_string(number));
  }
  return std::string(encoded(full, buffer));
}

std::size_t Language::characters(std::string_view text) const {
  if (set_ != CharacterSet::kUtf8) return text.size();
  return text.size() - static_cast<std::size_t>(std::ranges::count_if(text, continuesCharacter));
}

std::size_t Language::bytes(std::string_view text, std::size_t characters) const {
  if (set_ != CharacterSet::kUtf8) return std::min(characters, text.size());
  std::size_t end = 0;
  while (end < text.size() && (characters > 0 || continuesCharacter(text[end]))) {
    if (!continuesCharacter(text[end++])) --characters;
  }
  return end;
}

}  // namespace sandbox
