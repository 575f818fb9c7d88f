// arguments.h: the command line of the admin tool, read against tables.
//
// A subcommand is a row of a table with its options as another table; help texts and checks come
// from the tables alone. An option is `--name value` or `--name=value`; an option without a value
// is `--name`. Everything else is a positional argument, even "-50".
#ifndef SANDBOX_ZYLSTORE_ARGUMENTS_H
#define SANDBOX_ZYLSTORE_ARGUMENTS_H

#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

// What the user typed wrong: one line, exit status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Why a command that was typed right could not be carried out: one line, exit status 1.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws UsageError with the text unless the condition holds.
void demand(bool condition, const std::string& text);

std::string inQuotes(std::string_view text);

struct OptionRow {
  std::string_view name;   // "--hl"
  std::string_view value;  // what to call its value in the help; empty: it has none
  bool required;
  std::string_view help;
};

class Arguments;

struct CommandRow {
  std::string_view name;         // one or two words: "catalog add"
  std::string_view positionals;  // for the help: "FILE|-"
  std::size_t fewest, most;      // number of positional arguments
  std::string_view help;
  std::span<const OptionRow> options;
  void (*run)(const Arguments& arguments);
};

// The arguments of one command.
class Arguments {
 public:
  // `words` are those after the command's name. Throws UsageError.
  Arguments(const CommandRow& command, std::span<const std::string> words);

  bool has(std::string_view option) const { return values_.contains(option); }
  std::string text(std::string_view option, std::string_view otherwise = "") const;
  // Throws UsageError for a value that is no such number.
  std::int64_t number(std::string_view option, std::int64_t otherwise, std::int64_t least,
                      std::int64_t most) const;

  const std::vector<std::string>& positionals() const { return positionals_; }

 private:
  std::map<std::string, std::string, std::less<>> values_;
  std::vector<std::string> positionals_;
};

// The command that the first words name; `used` is how many they are. Throws UsageError.
const CommandRow& findCommand(std::span<const CommandRow> commands,
                              std::span<const std::string> words, std::size_t& used);

std::string helpText(std::span<const CommandRow> commands);
std::string helpText(const CommandRow& command);

}  // namespace sandbox

#endif  // SANDBOX_ZYLSTORE_ARGUMENTS_H
