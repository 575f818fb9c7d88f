// nls.h: the message system: numbered messages from a catalog, with inserts and responses.
//
// Messages live in a catalog file that is read through catopen and catgets. Set 1 holds the
// messages by number:
//
//   QRB 2522 S Not enough memory ...
//   |   |    |  the text, with conversions for its inserts (see render.h)
//   |   |    severity: E error, I information, S severe, W warning; Z for prompts, headings, screen
//   |   |    lines and spacers; any other letter from E to Z counts as I
//   |   the number, four digits
//   the prefix, three letters
//
// without the blanks between the four. A message is shown as its identifier, a blank and the text
// ("QRB2522S Not enough memory ..."), one with Z as the text alone. Set 2 holds the letters of the
// answers to each question, under the question's number; the first letter means yes.
//
// A message that is missing from the catalog, or damaged there, is still shown: by a text in the
// code, the number, and all inserts. The compiler checks each call against the English catalog, see
// message.h.
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
  int usedDefault;  // 1: the wanted catalog could not be opened, the default one was
};

// Creates the one message object of the process. Returns 0, or 102 without memory.
[[nodiscard]] unsigned short newNlsGlobalObject();
void destroyNlsGlobalObject();

// The three letters that message identifiers begin with.
void nlsSetPrefix(const char* prefix);

// Sets the run's date, time and number formats (nfdate.h), then opens the catalog `repository` in
// `directory`, or `defaultCatalog` there if that one cannot be opened. The formats are set even if
// neither can. `cacheSize` is how many fetched messages are kept in memory; `clientType` tells the
// product's programs apart. Returns 0, or 610 without a catalog. `info` may be null.
[[nodiscard]] unsigned short nlinit(const char* repository, int cacheSize, const char* directory,
                                    int clientType, int dateFormat, int timeFormat,
                                    int numberFormat, nlsReturnInfo* info,
                                    const char* defaultCatalog);

// Closes the catalog. Messages can still be printed, by the texts in the code.
void nlterm();

// The file name of a language's catalog. A language that has one is known by its first letters
// ("de_DE.UTF-8" and "GERMAN" give "vexo_de.cat"); an empty language gives "vexo.cat"; any other
// gives "vexo_", the language in small letters, and ".cat". Only its letters, digits and "_" are
// used, so that it cannot name a path. `out` has room for `size` bytes.
void psNlsGetReposName(const char* language, char* out, std::size_t size);

namespace nls {

inline constexpr char kDefaultCatalog[] = "vexo.cat";  // in English

inline constexpr unsigned short kNoMemory = 102;
inline constexpr unsigned short kCatalogNotOpened = 610;

// The message as it is shown, without a line end of its own. Empty only without memory.
std::string format(int number, std::span<const Insert> inserts);

// Whether the message can be shown as the catalog has it: it is there, undamaged, and takes these
// inserts.
bool isWhole(int number, std::span<const Insert> inserts);

// Prints the message to standard output, and a line end if the message has an identifier.
void print(int number, std::span<const Insert> inserts);

// The bare text of an entry, without inserts; empty when the catalog has no such message.
std::string plainText(Message<> message);

// Asks `question` until standard input answers with one of the question's letters, and returns that
// letter's index in the catalog's list. Only the first character after blanks counts, and its case
// does not. Any other answer is met with `mismatch`, whose insert lists the letters. Returns -1 at
// the end of input, and instead of 0 if the catalog cannot show the question whole: that is no yes.
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

// Whether the message can be shown with these inserts as the catalog has it.
template <char... Kinds, typename... Values>
bool nlIsWhole(nls::Message<Kinds...> message, const Values&... values) {
  message.template checkInserts<Values...>();
  const std::array<nls::Insert, sizeof...(Values)> inserts = {nls::Insert(values)...};
  return nls::isWhole(message.number(), inserts);
}

#endif  // COMMON_NLS_NLS_H
