// faults.cpp: commands that order failures and show the record of calls.
#include <iostream>

#include "sandbox/store/control.h"
#include "sandbox/store/text.h"
#include "sandbox/zylstore/commands.h"

namespace sandbox {
namespace {

constexpr std::int64_t kMostCalls = 1'000'000'000;

// What the positional arguments and options order.
Fault faultOf(const Arguments& arguments) {
  const std::vector<std::string>& words = arguments.positionals();
  demand(words.size() == 2, "fault needs OPERATION CODE, --clear or --list");
  const auto operation = findOperation(words[0]);
  demand(operation.has_value(),
         inQuotes(words[0]) + " is not an operation that returns a code; try vltEndTxn");
  const auto code = parseNumber(words[1], INT16_MIN, INT16_MAX);
  demand(code.has_value(), inQuotes(words[1]) + " is not a code from -32768 to 32767");
  const std::int64_t reason = arguments.number("--reason", 0, 0, UINT16_MAX);
  demand(reason == 0 || *operation == "vltEndTxn", "--reason is for vltEndTxn");
  demand(*code != 0 || reason != 0, "code 0 is not a fault; for vltEndTxn it is one with --reason");
  return {0,
          *operation,
          static_cast<std::int16_t>(*code),
          static_cast<std::uint16_t>(reason),
          arguments.number("--after", 0, 0, kMostCalls),
          arguments.number("--times", 1, 1, kMostCalls)};
}

void printLine(std::string_view line) { std::cout << line << '\n'; }

void runFault(const Arguments& arguments) {
  const bool clears = arguments.has("--clear"), lists = arguments.has("--list");
  demand(clears + lists + !arguments.positionals().empty() < 2,
         "fault takes either OPERATION CODE, --clear or --list");
  // Read before the store is opened: what was typed wrong is said first.
  const Fault fault = clears || lists ? Fault() : faultOf(arguments);
  Control control(storePath(arguments));
  if (clears) return control.clearFaults();
  if (lists) return control.listFaults(printLine);
  control.arm(fault);
}

void runCalls(const Arguments& arguments) {
  const std::string& word = arguments.positionals()[0];
  Control control(storePath(arguments));
  if (word == "show") return control.listCalls(printLine);
  if (word == "clear") return control.clearCalls();
  demand(word == "on" || word == "off", inQuotes(word) + " is none of on, off, show, clear");
  control.switchRecording(word == "on");
}

constexpr OptionRow kFaultOptions[] = {
    {"--after", "N", false, "let N calls pass first; default 0"},
    {"--times", "K", false, "fail K calls; default 1"},
    {"--reason", "R", false, "vltEndTxn: the reason code to give"},
    {"--clear", "", false, "remove all faults"},
    {"--list", "", false, "show the faults that are still to come"},
};

constexpr CommandRow kCommands[] = {
    {"fault", "OPERATION CODE", 0, 2,
     "make the client library fail an operation with a code\n"
     "OPERATION is a function of the library, with or without \"vlt\". Several faults of one\n"
     "operation act one after the other. Calls are counted over all processes. A program sees a\n"
     "new fault with its next call other than vltGetNextQObj and vltDeleteObj.",
     kFaultOptions, runFault},
    {"calls", "on|off|show|clear", 1, 1,
     "record the calls that programs make\n"
     "show prints one line per call, in the order in which they were made, tab-separated: number,\n"
     "process id, operation, arguments, code. Passwords are never recorded.",
     kNoOptions, runCalls},
};

}  // namespace

std::span<const CommandRow> faultCommands() { return kCommands; }

}  // namespace sandbox
