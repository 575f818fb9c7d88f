// message.h: the number of a message, checked by the compiler against the inserts that come with
// it.
//
// The build makes a row of each message of the first catalog (catalog/vexo.msg): its number, and
// the kind of each insert that its text takes. A call that names no message of it, or hands over
// other inserts, does not compile, and the compiler's message names one of the functions below.
// Catalogs that are edited or translated afterwards are still judged at run time, see render.h.
//
//   nlprintf(2580, count, size, oldest, newest, known);     checked
//   static constexpr nls::Message<> kPages[] = {2586};      checked; a table of numbers
//   nlprintf(nls::fromCode(rc), path);                      not checked: a code that is a number
#ifndef COMMON_NLS_MESSAGE_H
#define COMMON_NLS_MESSAGE_H

#include <array>
#include <concepts>
#include <string_view>

namespace nls {

// Never defined and never called: what is wrong with a call, for the compiler to say.
void thereIsNoSuchMessage();
void anInsertIsMissing();
void anInsertIsNotUsed();
void anInsertIsOfAnotherKind();

struct MessageRow {
  int number;
  std::string_view kinds;  // a letter for each insert: s text, c character, d whole number
};

inline constexpr MessageRow kMessageRows[] = {
#include "common/nls/messages.inc"
};

// The letter of an insert's kind, by the rules of Insert (render.h).
template <typename Value>
consteval char kindOf() {
  if constexpr (std::same_as<Value, char>) return 'c';
  if constexpr (std::integral<Value>) return 'd';
  return 's';
}

consteval void checkInserts(int number, std::string_view given) {
  for (const MessageRow& row : kMessageRows) {
    if (row.number != number) continue;
    if (given.size() < row.kinds.size()) anInsertIsMissing();
    if (given.size() > row.kinds.size()) anInsertIsNotUsed();
    if (given != row.kinds) anInsertIsOfAnotherKind();
    return;
  }
  thereIsNoSuchMessage();
}

// A number that is only known when the program runs.
struct Code {
  int number;
};
constexpr Code fromCode(int number) { return {number}; }

// The number of a message that takes inserts of these types.
template <typename... Values>
class Message {
 public:
  consteval Message(int number) : number_(number) {
    constexpr std::array<char, sizeof...(Values)> given = {kindOf<Values>()...};
    checkInserts(number, {given.data(), given.size()});
  }
  constexpr Message(Code code) : number_(code.number) {}

  constexpr int number() const { return number_; }

 private:
  int number_;
};

}  // namespace nls

#endif  // COMMON_NLS_MESSAGE_H
