// utparser.h: the command line.
//
// The arguments become two records and a result code. The parser prints only what fails before the
// message catalog is open; the entry code reports the result later, in the user's language, with
// vexoPrintError.
#ifndef UTILITY_UTPARSER_H
#define UTILITY_UTPARSER_H

#include <cstdint>
#include <string>

// Which command was given: exactly one flag is 1. The help flag is 1 as well if the command line is
// invalid. The fields are in the order of the command identifiers.
struct vexoCommandsInfo_t {
  std::uint32_t showEnvironment, showCliOptions, showSessOptions, showSessInfo, showVersions;
  std::uint32_t password, syncdb, help, deleteObj, query;
};

// The options and their values; all zero before the parse.
struct vexoOptionsInfo_t {
  char optFile[1025];            // -VEXO_OPTfile
  char outFile[1025];            // -OUTfile
  std::int32_t numCatalogs;      // -NUMCATalogs
  std::int32_t numOrcInstances;  // -NUMORCINSTances
  std::int32_t noCatalog;        // 1: -NOCATalog
  char oldPassword[65];          // of PASSWORD
  char newPassword[65];
  char refused[256];  // the argument that the parse ended with, as it was given; for its message
};

// Results of the parse.
inline constexpr unsigned short kParseOk = 0;
inline constexpr unsigned short kParseUnknownCommand = 1;
inline constexpr unsigned short kParseNoMatch = 3;  // of validateCommand only
inline constexpr unsigned short kParseBadOption = 4;
inline constexpr unsigned short kParseNoCommand = 12;
inline constexpr unsigned short kParseNoValue = 13;
inline constexpr unsigned short kParseBadNumber = 14;

// Opens the message catalog of the installation directory and parses the arguments, which are
// upper-cased and split at "=" in place. Returns one of the results above, or the code of a catalog
// that cannot be opened.
[[nodiscard]] unsigned short vexoParseCmdLine(int argc, char** argv, vexoCommandsInfo_t* commands,
                                              vexoOptionsInfo_t* options);

// Matches one upper-cased command word. Returns 0, with the command's flag set and its row of the
// command table in `*row`, or kParseNoMatch.
[[nodiscard]] unsigned short validateCommand(const char* text, vexoCommandsInfo_t* commands,
                                             unsigned short* row);

// Takes one option apart in place and stores its value. `*row` receives its row of the option
// table. Returns 0, kParseBadOption, kParseNoValue or kParseBadNumber.
[[nodiscard]] unsigned short validateOptions(char* text, vexoOptionsInfo_t* options,
                                             unsigned short* row);

// Fills the table of the options that each command accepts.
void initializeParser();

namespace utility {

// Opens the message catalog of the installation directory. Returns 0 or why it could not be opened,
// which it prints.
[[nodiscard]] unsigned short openMessageCatalog();

// Why the message catalog could not be opened, as plain text with a line end before and after it;
// empty for the results of a command line.
std::string startProblem(unsigned short result);

}  // namespace utility

// Prints what a parse result means; `text` is the command as it was given, or null, and `argument`
// the option that was refused.
void vexoPrintError(unsigned short result, const char* text, const char* argument = "");

#endif  // UTILITY_UTPARSER_H
