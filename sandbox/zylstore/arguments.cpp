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

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

const OptionRow* findOption(std::span<const OptionRow> rows, std::string_view name) {
  const auto found = std::ranges::find(rows, name, &OptionRow::name);
  return found != rows.end() ? &*found : nullptr;
}

const OptionRow& requireOption(const CommandRow& command, std::string_view name) {
  const OptionRow* row = findOption(command.options, name);
  if (row == nullptr) row = findOption(kCommon, name);
  if (row == nullptr)
    throw UsageError(std::string(command.name) + ": unknown option " + quoted(name));
  return *row;
}

std::string padded(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

std::string optionLine(const OptionRow& row) {
  std::string name(row.name);
  if (!row.value.empty()) name.append(" ").append(row.value);
  return "  " + padded(std::move(name), 30) + " " + std::string(row.help) +
         (row.required ? " (required)\n" : "\n");
}

}  // namespace

Arguments::Arguments(const CommandRow& command, std::span<const std::string> words) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!word.starts_with("--")) {
      positionals_.push_back(word);
      continue;
    }
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const OptionRow& row = requireOption(command, name);
    std::string& value = values_[name];
    if (row.value.empty()) {
      if (equals != std::string::npos) throw UsageError(name + " takes no value");
    } else if (equals != std::string::npos) {
      value = word.substr(equals + 1);
    } else {
      if (++i == words.size()) throw UsageError(name + " needs a value, " + std::string(row.value));
      value = words[i];
    }
  }
  wantsHelp_ = has("--help");
  if (wantsHelp_) return;
  for (const OptionRow& row : command.options)
    if (row.required && !has(row.name))
      throw UsageError(std::string(command.name) + " needs the option " + std::string(row.name));
  if (positionals_.size() < command.fewest)
    throw UsageError(std::string(command.name) + " needs " + std::string(command.positionals));
  if (positionals_.size() > command.most)
    throw UsageError(std::string(command.name) + ": unexpected argument " +
                     quoted(positionals_[command.most]));
}

std::string Arguments::text(std::string_view option, std::string_view otherwise) const {
  const auto found = values_.find(option);
  return found != values_.end() ? found->second : std::string(otherwise);
}

std::int64_t Arguments::number(std::string_view option, std::int64_t otherwise, std::int64_t least,
                               std::int64_t most) const {
  if (!has(option)) return otherwise;
  const std::optional<std::int64_t> value = parseNumber(text(option), least, most);
  if (!value)
    throw UsageError(std::string(option) + ": " + quoted(text(option)) + " is not a number from " +
                     std::to_string(least) + " to " + std::to_string(most));
  return *value;
}

Stamp Arguments::date(std::string_view option, Stamp otherwise) const {
  if (!has(option)) return otherwise;
  const std::optional<Stamp> value = parseStamp(text(option));
  if (!value)
    throw UsageError(std::string(option) + ": " + quoted(text(option)) +
                     " is not a date of the form YYYY-MM-DD or YYYY-MM-DDThh:mm:ss");
  return *value;
}

std::size_t Arguments::choice(std::string_view option,
                              std::span<const std::string_view> words) const {
  if (!has(option)) return 0;
  const auto found = std::ranges::find(words, text(option));
  if (found != words.end()) return static_cast<std::size_t>(found - words.begin());
  std::string known;
  for (std::string_view word : words) known.append(known.empty() ? "" : ", ").append(word);
  throw UsageError(std::string(option) + ": " + quoted(text(option)) + " is none of " + known);
}

const CommandRow& findCommand(std::span<const CommandRow> commands,
                              std::span<const std::string> words, std::size_t& used) {
  if (words.empty()) throw UsageError("a command is missing; zylstore --help lists them");
  for (used = std::min<std::size_t>(2, words.size()); used > 0; --used) {
    const std::string name = used == 2 ? words[0] + " " + words[1] : words[0];
    const auto found = std::ranges::find(commands, name, &CommandRow::name);
    if (found != commands.end()) return *found;
  }
  throw UsageError("unknown command " + quoted(words[0]) + "; zylstore --help lists them");
}

std::string helpText(std::span<const CommandRow> commands) {
  std::string text =
      "zylstore: the administrator's tool of the sandbox's storage server and Oracle catalogs\n\n"
      "Usage: zylstore COMMAND [ARGUMENT...] [--store PATH]\n"
      "       zylstore COMMAND --help\n\nCommands:\n";
  for (const CommandRow& command : commands)
    text.append("  ")
        .append(padded(std::string(command.name), 14))
        .append(command.help.substr(0, command.help.find('\n')))
        .append("\n");
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
