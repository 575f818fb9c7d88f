// nls.h: the message system: numbered messages from a catalog, with inserts and responses.
//
// Messages live in a catalog file read through catopen/catgets. In set 1 each message stands under
// its number:
//
//   QRB 2522 S Not enough memory ...
//   |   |    |  the text, with conversions for its inserts (see render.h)
//   |   |    severity: E error, I information, S severe, W warning; Z for prompts, headings, screen
//   |   |    lines and spacers; any other letter from E to Z counts as I
//   |   the number, four digits
//   the prefix, three letters
//
// without the blanks between the four. Shown are the identifier, a blank and the text
// ("QRB2522S Not enough memory ..."), but for Z the text alone. In set 2 a question stands under
// its number with the letters of its answers; the first letter means yes.
//
// A message that the catalog lacks, or one whose entry is damaged, is still shown: with a text that
// is held in the code, the number, and the inserts. Whether a call fits the first catalog is
// checked when it is compiled, see message.h.
#ifndef COMMON_NLS_NLS_H
#define COMMON_NLS_NLS_H

#include <array>
#include <span>
#include <string>

#include "common/nls/message.h"
#include "common/nls/messages.h"
#include "common/nls/render.h"

// What nlinit opened.
struct nlsReturnInfo {
  char catalogPath[1280];
  int usedDefault;  // 1: the wanted catalog is missing, the default one was opened in its place
};

// Creates the one message object of the process. Returns 0, or 102 without memory.
[[nodiscard]] unsigned short newNlsGlobalObject();
void destroyNlsGlobalObject();

// The three letters that message identifiers begin with.
void nlsSetPrefix(const char* prefix);

// Opens the catalog `repository` in `directory`, or `defaultCatalog` there when that one cannot be
// opened, and sets the run's date, time and number formats (nfdate.h). `cacheSize` is how many
// fetched messages are kept at hand; `clientType` tells the programs of the product apart.
// Returns 0, or 610 when neither catalog can be opened. `info` may be null.
[[nodiscard]] unsigned short nlinit(const char* repository, int cacheSize, const char* directory,
                                    int clientType, int dateFormat, int timeFormat,
                                    int numberFormat, nlsReturnInfo* info,
                                    const char* defaultCatalog);

// Closes the catalog. Messages can still be printed, with the texts held in the code.
void nlterm();

// The catalog's file name for a language: that of a language that we have a catalog for, by the
// first letters ("de_DE.UTF-8" and "GERMAN" give "vexo_de.cat"), "vexo.cat" when it is empty, else
// "vexo_", the language in small letters, ".cat". Only letters, digits and "_" of a language are
// used, so that it can name no path. `out` has room for `size` bytes.
void psNlsGetReposName(const char* language, char* out, std::size_t size);

namespace nls {

inline constexpr char kDefaultCatalog[] = "vexo.cat";  // in English

inline constexpr unsigned short kNoMemory = 102;
inline constexpr unsigned short kCatalogNotOpened = 610;

// The message as it is shown, without a line end of its own. Empty only without memory.
std::string format(int number, std::span<const Insert> inserts);

// Prints the message to standard output; one with an identifier gets a line end.
void print(int number, std::span<const Insert> inserts);

// The bare text of an entry, without inserts; empty when the catalog has no such message.
std::string plainText(Message<> message);

// Asks message `question` until standard input gives one of its letters, in any case, and returns
// that letter's place in the catalog's list, from 0. An answer that is none of them is met with
// message `mismatch`, which gets the letters as its insert. -1 at end of input.
int ask(Message<> question, Message<'s'> mismatch);

}  // namespace nls

// Prints a message with its inserts.
template <char... Kinds, typename... Values>
void nlprintf(nls::Message<Kinds...> message, const Values&... values) {
  message.template checkInserts<Values...>();
  const std::array<nls::Insert, sizeof...(Values)> inserts = {nls::Insert(values)...};
  nls::print(message.number(), inserts);
}

// The message as an owned text, without a line end of its own.
template <char... Kinds, typename... Values>
std::string nlsprintf(nls::Message<Kinds...> message, const Values&... values) {
  message.template checkInserts<Values...>();
  const std::array<nls::Insert, sizeof...(Values)> inserts = {nls::Insert(values)...};
  return nls::format(message.number(), inserts);
}

#endif  // COMMON_NLS_NLS_H
