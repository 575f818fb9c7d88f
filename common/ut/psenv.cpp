// psenv.cpp: reading the environment, see psenv.h.
#include "common/ut/psenv.h"

#include <cstdlib>

#include "common/ut/result.h"
#include "common/ut/strutil.h"

int psGetEnvVariable(const char* name, char* value, std::size_t size) {
  const char* found = std::getenv(name);
  if (found != nullptr && *found != '\0' && ut::copyText(value, size, found)) return 1;
  ut::ignoreResult(ut::copyText(value, size, ""), "an absent value is the empty text");
  return 0;
}
