// commands.h: the commands of the admin tool, by the file that holds them, and what they share. A
// command prints its result to standard output and throws for everything else.
#ifndef SANDBOX_ZYLSTORE_COMMANDS_H
#define SANDBOX_ZYLSTORE_COMMANDS_H

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "sandbox/store/store.h"
#include "sandbox/zylstore/arguments.h"

namespace sandbox {

// Each file's rows of the command table.
std::span<const CommandRow> objectCommands();   // init, node, put, load, list, limits
std::span<const CommandRow> catalogCommands();  // catalog ..., generate
std::span<const CommandRow> faultCommands();    // fault, calls

inline constexpr std::span<const OptionRow> kNoOptions;

// The path of --store or its default. Throws UsageError if there is neither.
std::string storePath(const Arguments& arguments);

// A node of the store. Throws CommandError if it is not registered.
Node requireNode(Store& store, std::string_view name);

// Registers a node, or replaces its password and flags. Throws UsageError for a name or password
// that no client could use.
void saveNode(Store& store, const std::string& name, const std::string& password,
              bool expired = false, bool mayDelete = true);

// Reads a tab-separated file, "-" being standard input; lines that are empty or begin with "#" are
// comments. `take` gets a line's fields and returns what is wrong with them, or an empty text.
// All bad lines are reported on standard error with their numbers, up to twenty; then CommandError
// is thrown. Returns the number of lines taken.
using LineTaker = std::function<std::string(std::span<const std::string_view> fields)>;
std::int64_t readTable(const std::string& file, const LineTaker& take);

}  // namespace sandbox

#endif  // SANDBOX_ZYLSTORE_COMMANDS_H
