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
  if (arguments.positionals().size() != 2)
    throw UsageError("fault needs OPERATION CODE, --clear or --list");
  const std::string& name = arguments.positionals()[0];
  const std::optional<std::string> operation = findOperation(name);
  if (!operation)
    throw UsageError("\"" + name + "\" is no operation that returns a code; try vltEndTxn");
  const std::optional<std::int64_t> code =
      parseNumber(arguments.positionals()[1], INT16_MIN, INT16_MAX);
  if (!code)
    throw UsageError("\"" + arguments.positionals()[1] + "\" is not a code from -32768 to 32767");
  Fault fault;
  fault.operation = *operation;
  fault.code = static_cast<std::int16_t>(*code);
  fault.reason = static_cast<std::uint16_t>(arguments.number("--reason", 0, 0, UINT16_MAX));
  fault.remaining = arguments.number("--after", 0, 0, kMostCalls);
  fault.times = arguments.number("--times", 1, 1, kMostCalls);
  if (fault.reason != 0 && fault.operation != "vltEndTxn")
    throw UsageError("--reason is for vltEndTxn");
  if (fault.code == 0 && fault.reason == 0)
    throw UsageError("code 0 is no fault; for vltEndTxn it is one with --reason");
  return fault;
}

void printLine(std::string_view line) { std::cout << line << '\n'; }

void runFault(const Arguments& arguments) {
  const bool clears = arguments.has("--clear"), lists = arguments.has("--list");
  if ((clears || lists) && (clears == lists || !arguments.positionals().empty()))
    throw UsageError("fault takes either OPERATION CODE, --clear or --list");
  // Read before the store is opened: what was typed wrong is said first.
  const Fault fault = clears || lists ? Fault() : faultOf(arguments);
  Control control(storePath(arguments));
  if (clears)
    control.clearFaults();
  else if (lists)
    control.listFaults(printLine);
  else
    control.arm(fault);
}

void runCalls(const Arguments& arguments) {
  const std::string& word = arguments.positionals()[0];
  Control control(storePath(arguments));
  if (word == "on" || word == "off")
    control.switchRecording(word == "on");
  else if (word == "show")
    control.listCalls(printLine);
  else if (word == "clear")
    control.clearCalls();
  else
    throw UsageError("calls: \"" + word + "\" is none of on, off, show, clear");
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
     "show prints one line a call, in the order in which they were made, tab-separated: number,\n"
     "process id, operation, arguments, code. Passwords are never recorded.",
     kNoOptions, runCalls},
};

}  // namespace

std::span<const CommandRow> faultCommands() { return kCommands; }

}  // namespace sandbox
