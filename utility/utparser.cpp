// utparser.cpp: the command line, see utparser.h. The keyword tables are data.
#include "utility/utparser.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "agent/orcctx.h"
#include "agent/psutil2.h"
#include "agent/utility2.h"
#include "common/nls/nls.h"
#include "common/ut/abbrev.h"
#include "common/ut/ascii.h"
#include "common/ut/result.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"

namespace {

enum CommandId {
  kShowEnvironment,
  kShowCliOptions,
  kShowSessOptions,
  kShowSessInfo,
  kShowVersions,
  kPassword,
  kSyncdb,
  kHelp,
  kDelete,
  kQuery,
  kCommandCount
};

enum OptionId { kOptFile, kOutFile, kNumCatalogs, kNoCatalog, kNumOrcInstances, kOptionCount };

struct KeywordRow {
  char keyword[100];  // the capital letters show the shortest abbreviation
  unsigned short id;
  unsigned short minimum;
};

// Searched in this order, the first match wins.
constexpr KeywordRow commandTable[] = {
    {"SHOWENVironment", kShowEnvironment, 7},
    {"SHOWCLIOPtions", kShowCliOptions, 9},
    {"SHOWSESSOPtions", kShowSessOptions, 10},
    {"SHOWSESSINFO", kShowSessInfo, 12},
    {"SHOWVERsions", kShowVersions, 7},
    {"PASSWord", kPassword, 5},
    {"SYNCdb", kSyncdb, 4},
    {"DELETE", kDelete, 6},
    {"Query", kQuery, 1},
    {"HELP", kHelp, 4},
};

constexpr KeywordRow optionTable[] = {
    {"-VEXO_OPTfile", kOptFile, 9},
    {"-OUTfile", kOutFile, 4},
    {"-NUMCATalogs", kNumCatalogs, 7},
    {"-NOCATalog", kNoCatalog, 6},
    {"-NUMORCINSTances", kNumOrcInstances, 11},
};

struct AllowedRow {
  CommandId command;
  OptionId option;
};

constexpr AllowedRow allowedTable[] = {
    {kShowEnvironment, kOptFile}, {kShowEnvironment, kOutFile}, {kShowCliOptions, kOptFile},
    {kShowCliOptions, kOutFile},  {kShowSessOptions, kOptFile}, {kShowSessOptions, kOutFile},
    {kShowSessInfo, kOptFile},    {kShowSessInfo, kOutFile},    {kShowVersions, kOptFile},
    {kShowVersions, kOutFile},    {kPassword, kOptFile},        {kSyncdb, kOptFile},
    {kSyncdb, kNumCatalogs},      {kSyncdb, kNoCatalog},        {kSyncdb, kNumOrcInstances},
    {kDelete, kOptFile},          {kQuery, kOptFile},
};

// Which options each command accepts. initializeParser fills it from allowedTable at every parse.
int validOptions[kCommandCount][kOptionCount];

// The flag of each command, by its identifier.
constexpr std::uint32_t vexoCommandsInfo_t::*kCommandFlags[kCommandCount] = {
    &vexoCommandsInfo_t::showEnvironment, &vexoCommandsInfo_t::showCliOptions,
    &vexoCommandsInfo_t::showSessOptions, &vexoCommandsInfo_t::showSessInfo,
    &vexoCommandsInfo_t::showVersions,    &vexoCommandsInfo_t::password,
    &vexoCommandsInfo_t::syncdb,          &vexoCommandsInfo_t::help,
    &vexoCommandsInfo_t::deleteObj,       &vexoCommandsInfo_t::query,
};

// The row of the table that `text` (upper-cased) abbreviates, or -1.
template <std::size_t N>
int findKeyword(const KeywordRow (&table)[N], const char* text) {
  for (std::size_t row = 0; row < N; ++row) {
    char keyword[sizeof table[row].keyword];
    std::memcpy(keyword, table[row].keyword, sizeof keyword);
    ut::upperCase(keyword);
    if (Abbrev(text, keyword, table[row].minimum)) return static_cast<int>(row);
  }
  return -1;
}

// A number of the digits 1 to 9 that fits its field. The digit 0 is refused anywhere, so 10 and 20
// are not numbers here. Kept on purpose, pinned by CommandLine.GivesAResultForEveryLine.
bool parseNumber(const char* value, std::int32_t* number) {
  if (std::strspn(value, "123456789") != std::strlen(value)) return false;
  const long long wide = std::strtoll(value, nullptr, 10);  // the largest one, if that is too small
  if (wide > std::numeric_limits<std::int32_t>::max()) return false;
  *number = static_cast<std::int32_t>(wide);
  return true;
}

unsigned short storeFileName(char (&field)[1025], const char* value) {
  if (std::strlen(value) >= sizeof field) return kParseBadOption;  // never half a name
  ut::ignoreResult(ut::copyText(field, value), "it fits");
  return kParseOk;
}

unsigned short storeNumber(OptionId id, const char* value, vexoOptionsInfo_t* options) {
  std::int32_t number = 0;
  if (!parseNumber(value, &number)) return kParseBadNumber;
  if (id == kNumCatalogs) {
    options->numCatalogs = number;
    if (options->noCatalog != 0) return kParseBadOption;
  } else {
    options->numOrcInstances = number;
  }
  const bool both = options->numCatalogs >= 1 && options->numOrcInstances >= 1;
  return both ? kParseBadOption : kParseOk;
}

unsigned short storeOption(OptionId id, const char* value, vexoOptionsInfo_t* options) {
  if (id == kNoCatalog) {
    options->noCatalog = 1;
    return options->numCatalogs >= 1 ? kParseBadOption : kParseOk;
  }
  if (value == nullptr || *value == '\0') return kParseNoValue;
  if (id == kOptFile) return storeFileName(options->optFile, value);
  if (id == kOutFile) return storeFileName(options->outFile, value);
  return storeNumber(id, value, options);
}

}  // namespace

unsigned short utility::openMessageCatalog() {
  char directory[kOptionSize];
  unsigned short rc = psvexoGetVexoDir(directory, sizeof directory);
  if (rc == 0) {
    rc = nlinit(nls::kDefaultCatalog, agent::kMessageCache, directory, agent::kClientType, 1, 1, 1,
                nullptr, nls::kDefaultCatalog);
  }
  if (rc != 0) std::printf("%s", utility::startProblem(rc).c_str());
  return rc;
}

namespace {

// Where options begin. PASSWORD may be followed by the old and the new password. They are first
// tried as options, which upper-cases them and cuts them at a "=". Kept on purpose, pinned by
// CommandLine.TakesPasswordsAsTheTrialAsOptionsLeavesThem.
int firstOption(int argc, char** argv, bool password, vexoOptionsInfo_t* options) {
  if (!password || argc < 4) return 2;
  unsigned short row = 0;
  const std::size_t oldLength = std::strlen(argv[2]), newLength = std::strlen(argv[3]);
  const bool firstIsOption = validateOptions(argv[2], options, &row) == kParseOk;
  const bool secondIsOption = validateOptions(argv[3], options, &row) == kParseOk;
  if (firstIsOption || secondIsOption) return 2;
  ut::ignoreResult(ut::copyText(options->oldPassword, argv[2]), "at most 64 characters are used");
  ut::ignoreResult(ut::copyText(options->newPassword, argv[3]), "at most 64 characters are used");
  // Every user can read the arguments of a process.
  ut::wipe(argv[2], oldLength);
  ut::wipe(argv[3], newLength);
  return 4;
}

}  // namespace

void initializeParser() {
  std::memset(validOptions, 0, sizeof validOptions);
  for (const AllowedRow& row : allowedTable) validOptions[row.command][row.option] = 1;
}

unsigned short validateCommand(const char* text, vexoCommandsInfo_t* commands,
                               unsigned short* row) {
  const int found = findKeyword(commandTable, text);
  if (found < 0) return kParseNoMatch;
  *row = static_cast<unsigned short>(found);
  commands->*kCommandFlags[commandTable[found].id] = 1;
  return kParseOk;
}

unsigned short validateOptions(char* text, vexoOptionsInfo_t* options, unsigned short* row) {
  if (text == nullptr) return kParseBadOption;
  char* value = std::strchr(text, '=');
  if (value != nullptr) *value++ = '\0';
  ut::upperCase(text);
  const int found = findKeyword(optionTable, text);
  if (found < 0) return kParseBadOption;
  *row = static_cast<unsigned short>(found);
  return storeOption(static_cast<OptionId>(optionTable[found].id), value, options);
}

namespace {

// Keeps an argument that the parser is about to take apart, for the message if it is refused. An
// argument of PASSWORD may be a password.
void keepArgument(unsigned short command, const char* argument, vexoOptionsInfo_t* options) {
  ut::ignoreResult(ut::copyText(options->refused, command == kPassword ? "(not shown)" : argument),
                   "a long one is cut: it is only shown");
}

}  // namespace

unsigned short vexoParseCmdLine(int argc, char** argv, vexoCommandsInfo_t* commands,
                                vexoOptionsInfo_t* options) {
  unsigned short rc = utility::openMessageCatalog();
  if (rc != 0) return rc;
  initializeParser();
  if (argc <= 1) {
    commands->help = 1;
    return kParseNoCommand;
  }
  ut::upperCase(argv[1]);
  unsigned short commandRow = 0;
  if (validateCommand(argv[1], commands, &commandRow) != kParseOk) {
    commands->help = 1;
    return kParseUnknownCommand;
  }
  if (argc == 2) return kParseOk;
  const unsigned short command = commandTable[commandRow].id;
  for (int i = firstOption(argc, argv, command == kPassword, options); i < argc; ++i) {
    unsigned short optionRow = 0;
    keepArgument(command, argv[i], options);
    rc = validateOptions(argv[i], options, &optionRow);
    if (rc == kParseOk && validOptions[command][optionTable[optionRow].id] == 0) {
      rc = kParseBadOption;
    }
    if (rc != kParseOk) {
      commands->help = 1;
      return rc;
    }
  }
  *options->refused = '\0';
  return kParseOk;
}

std::string utility::startProblem(unsigned short result) {
  char text[512];
  if (result == msg::kNoInstallPath.code()) {
    return "\n QRB2601E There is no Registry entry for VEX for Oracle install path.\n";
  }
  if (result == nls::kCatalogNotOpened) {
    std::snprintf(
        text, sizeof text,
        "\nError: Couldn't initialize NLS object. Check that the message file, %s, exists "
        "in the VEX for Oracle directory.  rc = %d\n",
        nls::kDefaultCatalog, result);
    return text;
  }
  if (result <= kParseBadNumber) return {};
  std::snprintf(text, sizeof text,
                "\n ERROR: Could not find VEX for Oracle install path, rc = %d\n", result);
  return text;
}

namespace {

// Prints the message of a result. True if the command follows it.
bool printReason(unsigned short result, const char* argument) {
  switch (result) {
    case kParseBadOption:
      nlprintf(msg::kBadOption, argument);
      return true;
    case kParseNoCommand:
      nlprintf(msg::kNoCommand);
      return false;
    case kParseNoValue:
      nlprintf(msg::kNoOptionValue, argument);
      return false;
    case kParseBadNumber:
      nlprintf(msg::kBadNumber, argument);
      return false;
    default:
      break;
  }
  if (!utility::startProblem(result).empty()) {
    nlprintf(msg::kCommandLineNotRead, result);
    return false;
  }
  nlprintf(msg::kUnknownCommand);  // an unknown command, and whatever else there may be
  return true;
}

}  // namespace

void vexoPrintError(unsigned short result, const char* text, const char* argument) {
  nlprintf(msg::kBlankLine);
  const bool withCommand = printReason(result, argument);
  if (withCommand && text != nullptr) nlprintf(msg::kLine, text);
  nlprintf(msg::kBlankLine);
}
