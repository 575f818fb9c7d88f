// dialogue.h: the questions that the commands ask on standard input: dates, answers, yes or no.
#ifndef UTILITY_DIALOGUE_H
#define UTILITY_DIALOGUE_H

#include "common/ut/nfdate.h"
#include "common/ut/psterm.h"

// Asks for both dates until the range is valid. `usedDefaultEnd` becomes 1 when the default end
// date is taken, even if the range is then refused and asked for again; it is never reset.
void utGetDates(nfDate* start, nfDate* end, int& usedDefaultEnd);

// The defaults in the run's date format: 1 January 1990 and today; 16 bytes each.
void utGetDefaultDates(char* start, char* end);

// Reads one line from standard input into `buffer`, at most size - 1 characters, without leading
// blanks. End of input gives an empty answer; the result distinguishes it from an empty line, and
// says whether the answer had to be cut.
ut::ReadResult ReadAnswer(char* buffer, int size);

// Asks whether to continue until it is answered. 1 for yes; 0 for no and at end of input.
[[nodiscard]] int PromptYN();

#endif  // UTILITY_DIALOGUE_H
