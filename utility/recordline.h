// recordline.h: what the lines of the record of deletions and of the report have in common.
//
// Both are JSON Lines (see jsonline.h). Every line has the version of the format and its event. A
// reader ignores members that it does not know; the version changes when one is removed or gets
// another meaning.
#ifndef UTILITY_RECORDLINE_H
#define UTILITY_RECORDLINE_H

#include <string>

#include "common/ut/jsonline.h"
#include "utility/zylobj.h"

namespace utility {

// "START-PID": one run among all on this machine. START is in seconds of the system clock, and
// tells apart the runs that had the same process number.
const std::string& runName();

// A line with "v" and "event".
ut::JsonLine recordLine(const char* event);

// Adds when the line was made and whose it is: "time" (local, with its offset from UTC), "pid" and
// "user".
void addOrigin(ut::JsonLine* line);

// Adds what identifies an object: "id" (the server's identifier, as a text, for it has up to 20
// digits), "size" in bytes, "date" (when it was stored, local time).
void addObject(const utZylObj_s& object, ut::JsonLine* line);

}  // namespace utility

#endif  // UTILITY_RECORDLINE_H
