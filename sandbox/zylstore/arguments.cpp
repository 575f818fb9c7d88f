// arguments.cpp: the command line of the admin tool, read against tables.
#include "sandbox/zylstore/arguments.h"

#include <algorithm>

#include "sandbox/store/text.h"

namespace sandbox {
namespace {

constexpr OptionRow kCommon[] = {
    {"--store", "PATH", false, "the store; default $SANDBOX_HOME/store.db"},
    {"--help", "", false, "show this text"},
};

const OptionRow& requireOption(const CommandRow& command, std::string_view name) {
  for (const auto& rows : {command.options, std::span<const OptionRow>(kCommon)}) {
    const auto found = std::ranges::find(rows, name, &OptionRow::name);
    if (found != rows.end()) return *found;
  }
  throw UsageError(std::string(command.name) + ": unknown option " + inQuotes(name));
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

std::string optionLine(const OptionRow& row) {
  std::string name(row.name);
  if (!row.value.empty()) name.append(" ").append(row.value);
  return "  " + padded(std::move(name), 30) + " " + std::string(row.help) +
         (row.required ? " (required)\n" : "\n");
}

}  // namespace

void demand(bool condition, const std::string& text) {
  if (!condition) throw UsageError(text);
}

std::string inQuotes(std::string_view text) {
  return std::string(1, '"').append(text).append(1, '"');
}

Arguments::Arguments(const CommandRow& command, std::span<const std::string> words) {
  const std::string commandName(command.name);
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (!words[i].starts_with("--")) {
      positionals_.push_back(words[i]);
      continue;
    }
    const std::size_t equals = words[i].find('=');
    const std::string name = words[i].substr(0, equals);
    const OptionRow& row = requireOption(command, name);
    std::string& value = values_[name];
    if (equals != std::string::npos) {
      demand(!row.value.empty(), name + " takes no value");
      value = words[i].substr(equals + 1);
    } else if (!row.value.empty()) {
      demand(++i < words.size(), name + " needs a value, " + std::string(row.value));
      value = words[i];
    }
  }
  if (has("--help")) return;
  for (const OptionRow& row : command.options) {
    demand(!row.required || has(row.name),
           commandName + " needs the option " + std::string(row.name));
  }
  demand(positionals_.size() >= command.fewest,
         commandName + " needs " + std::string(command.positionals));
  if (positionals_.size() <= command.most) return;
  throw UsageError(commandName + ": unexpected argument " + inQuotes(positionals_[command.most]));
}

std::string Arguments::text(std::string_view option, std::string_view otherwise) const {
  const auto found = values_.find(option);
  return found != values_.end() ? found->second : std::string(otherwise);
}

std::int64_t Arguments::number(std::string_view option, std::int64_t otherwise, std::int64_t least,
                               std::int64_t most) const {
  if (!has(option)) return otherwise;
  const auto value = parseNumber(text(option), least, most);
  demand(value.has_value(), std::string(option) + ": " + inQuotes(text(option)) +
                                " is not a number from " + std::to_string(least) + " to " +
                                std::to_string(most));
  return *value;
}

const CommandRow& findCommand(std::span<const CommandRow> commands,
                              std::span<const std::string> words, std::size_t& used) {
  demand(!words.empty(), "a command is missing; zylstore --help lists them");
  for (used = std::min<std::size_t>(2, words.size()); used > 0; --used) {
    const std::string name = used == 2 ? words[0] + " " + words[1] : words[0];
    const auto found = std::ranges::find(commands, name, &CommandRow::name);
    if (found != commands.end()) return *found;
  }
  throw UsageError("unknown command " + inQuotes(words[0]) + "; zylstore --help lists them");
}

std::string helpText(std::span<const CommandRow> commands) {
  std::string text =
      "zylstore: the administrator's tool of the sandbox's storage server and Oracle catalogs\n\n"
      "Usage: zylstore COMMAND [ARGUMENT...] [--store PATH]\n"
      "       zylstore COMMAND --help\n\nCommands:\n";
  for (const CommandRow& command : commands) {
    text += "  " + padded(std::string(command.name), 14);
    text.append(command.help.substr(0, command.help.find('\n'))).append("\n");
  }
  return text;
}

std::string helpText(const CommandRow& command) {
  std::string text = "Usage: zylstore " + std::string(command.name);
  if (!command.positionals.empty()) text.append(" ").append(command.positionals);
  text.append(" [OPTION...]\n\n").append(command.help).append("\n\nOptions:\n");
  for (const OptionRow& row : command.options) text += optionLine(row);
  for (const OptionRow& row : kCommon) text += optionLine(row);
  return text;
}

}  // namespace sandbox
