// syncdb_names.h: what the search tree calls for file names, which are terminated texts.
#ifndef UTILITY_SYNCDB_NAMES_H
#define UTILITY_SYNCDB_NAMES_H

#include "utility/bplus.h"

// Copies the name `from` with its terminator to `to`, which has room for it. Returns 0.
unsigned short utInsertFilename(void* from, void* to);

// Compares byte by byte: letters that differ in case differ.
compare_t utFindFilename(void* searched, void* stored);

// Releases one item; null is ignored.
void utFreeTree(void* item);

#endif  // UTILITY_SYNCDB_NAMES_H
