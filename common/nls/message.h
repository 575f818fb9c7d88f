// message.h: the type of a message's name, which makes the compiler check the inserts of each call.
//
// The build makes a constant for each message of the English catalog (catalog/vexo.msg) in the
// header common/nls/messages.h: its name in the code, with its number and the kinds of its inserts.
// A call with other inserts does not compile. A catalog that was edited or translated is checked
// again at run time, see render.h.
//
//   nlprintf(msg::kAboutToDelete, count, size, oldest, newest, known);
//   static constexpr nls::Message<> kPages[] = {msg::kHelpCommands, msg::kHelpOptions};
#ifndef COMMON_NLS_MESSAGE_H
#define COMMON_NLS_MESSAGE_H

#include <concepts>
#include <string_view>

namespace nls {

// The letter of an insert's kind, by the rules of Insert (render.h): s text, c character, d whole
// number.
template <typename Value>
consteval char kindOf() {
  if constexpr (std::same_as<Value, char>) return 'c';
  if constexpr (std::integral<Value>) return 'd';
  return 's';
}

// A message that takes inserts of these kinds, in this order.
template <char... Kinds>
class Message {
 public:
  constexpr explicit Message(int number) : number_(number) {}

  // The number in the catalog and in the message's identifier.
  constexpr int number() const { return number_; }
  // The number as a return code: many failures end the program with the number of their message.
  constexpr unsigned short code() const { return static_cast<unsigned short>(number_); }

  template <typename... Values>
  static consteval void checkInserts() {
    static_assert(sizeof...(Values) >= sizeof...(Kinds), "an insert is missing");
    static_assert(sizeof...(Values) <= sizeof...(Kinds), "an insert is not used");
    constexpr char kWanted[] = {Kinds..., '\0'}, kGiven[] = {kindOf<Values>()..., '\0'};
    static_assert(std::string_view(kWanted) == std::string_view(kGiven),
                  "an insert is of another kind");
  }

 private:
  int number_;
};

}  // namespace nls

#endif  // COMMON_NLS_MESSAGE_H
