// syncdb.h: the command flow of SYNCDB, DELETE and QUERY, and the stages behind it.
//
// Every stage takes what it needs as arguments and returns 0 or a code, which becomes the program's
// result: the first failure's code, unchanged. Where two dates are passed to a stage the end date
// comes first; utGetFileList takes the start date first.
#ifndef UTILITY_SYNCDB_H
#define UTILITY_SYNCDB_H

#include <cstdint>
#include <ctime>
#include <string>

#include "agent/orcctx.h"
#include "common/ut/nfdate.h"
#include "common/ut/psterm.h"
#include "utility/bplus.h"
#include "utility/utparser.h"
#include "utility/zylobj.h"

namespace utility {

// What one catalog's spool file held.
struct CatalogListing {
  std::uint64_t rows = 0;     // handles, each as often as it stands there
  std::uint64_t handles = 0;  // that the tree did not know before
};

// The time of last change, in seconds, of a spool file that sqlplus has not written.
inline constexpr std::time_t kNotWritten = 0;

}  // namespace utility

// ---- The flow (syncdb.cpp) ----------------------------------------------------------------------

// Logs on, asks for the dates, runs the command's stage and logs off.
[[nodiscard]] unsigned short vexoProcessCommand(orcObj_t* orc, vexoOptionsInfo_t& options,
                                                vexoCommandsInfo_t commands);

// Asks until the user gives a valid range. `usedDefaultEnd` becomes 1 when the default end date was
// taken, also by an earlier try, and is never set back.
void utGetDates(nfDate* start, nfDate* end, int& usedDefaultEnd);

// The defaults in the run's date format: 1 January 1990 and today; 16 bytes each.
void utGetDefaultDates(char* start, char* end);

// Shows the pick list and deletes what was picked, again and again, until the user leaves (300) or
// something fails.
[[nodiscard]] unsigned short utProcessPickList(orcObj_t* orc, CLinkedList<utZylObj_s>* list);

// Prints one object.
void utPrintBackupItem(utZylObj_s* object);

// Reads one line from standard input into `buffer`, at most size - 1 characters of it, without
// leading blanks. End of input gives the empty answer; the result tells it from an empty line, and
// whether the answer had to be cut.
ut::ReadResult ReadAnswer(char* buffer, int size);

// Asks message 371 until it is answered. 1 for yes; 0 for no and at end of input.
[[nodiscard]] int PromptYN();

// ---- Listing (syncdb_listing.cpp) ---------------------------------------------------------------

// Appends the active objects of the range to `list`, without those whose name is in `tree` (may be
// null). Returns 0 (also when there is nothing: message 2599), 102 without memory, or the API's
// code.
[[nodiscard]] unsigned short utGetFileList(const nfDate& start, const nfDate& end, orcObj_t* orc,
                                           CLinkedList<utZylObj_s>* list, dsBPlusTree* tree);

// QUERY: prints the objects of the range.
[[nodiscard]] unsigned short utQueryZyl(orcObj_t* orc, vexoOptionsInfo_t& options,
                                        const nfDate& end, const nfDate& start);

// ---- Catalogs (syncdb_catalog.cpp, syncdb_spool.cpp, syncdb_reconcile.cpp)
// -----------------------

// Has sqlplus spool the handles of one catalog. Returns 0, 2575 when the script cannot be written,
// or 2533 when it would be too long, or sqlplus fails.
[[nodiscard]] unsigned short utQueryCatalog(const objCatInfo_s* catalog, const char* scriptPath,
                                            const char* spoolPath, const nfDate& start,
                                            const nfDate& end);

// Puts the handles of a spool file into the tree and removes the file. Returns 0, 2576 when it
// cannot be read, 2533 after a message when the listing is not sound (an error of Oracle in it, a
// row count that does not fit, an end that is missing, a file that is not the query's), or the
// tree's code. After anything but 0 the tree is of no use. `listing`, if not null, then tells what
// was read.
[[nodiscard]] unsigned short utLoadBTree(const char* spoolPath, dsBPlusTree** tree,
                                         utility::CatalogListing* listing = nullptr);

// SYNCDB: the objects of the range that no catalog knows go to the pick list. `usedDefaultEnd` is
// what utGetDates said.
[[nodiscard]] unsigned short utSyncZylToRman(orcObj_t* orc, vexoOptionsInfo_t& options,
                                             const nfDate& end, const nfDate& start,
                                             int usedDefaultEnd);

// What the tree calls for file names, which are terminated texts: copy, compare, free.
unsigned short utInsertFilename(void* from, void* to);
compare_t utFindFilename(void* searched, void* stored);
void utFreeTree(void* item);

// ---- Deletion (syncdb_deletion.cpp) -------------------------------------------------------------

// DELETE: all objects of the range go to the pick list.
[[nodiscard]] unsigned short utDeleteFromZyl(orcObj_t* orc, vexoOptionsInfo_t& options,
                                             const nfDate& end, const nfDate& start);

// Asks, then deletes the picked objects from the storage server in transactions. Each is taken out
// of the list as soon as its delete call succeeded. Returns 0 (also when the user declines), or the
// code of the first failure, which ends the work.
[[nodiscard]] unsigned short utDeleteFiles(CLinkedList<utZylObj_s>* list, orcObj_t* orc);

namespace utility {

inline constexpr unsigned short kFailed = 65535;  // a command's own failure, -1

enum class Report { kLogOnly, kLogAndTerminal };

// Reports a code of the storage API: its text goes to the error log, and where wanted to the
// terminal. Returns the text.
std::string reportCode(orcObj_t* orc, int16_t rc, Report where);

// Prints a text of the program between blank lines.
void printFramed(const std::string& text);

// The same, and a line of the error log.
void reportText(const std::string& text);

// Removes a temporary file, unless the trace flag ORCLEVEL2 wants it for diagnosis.
void removeUnlessTraced(const char* path);

}  // namespace utility

#endif  // UTILITY_SYNCDB_H
