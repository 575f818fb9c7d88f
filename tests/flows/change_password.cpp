// change_password.cpp: the password change as a separate program, because no command of vexosync
// reaches it: `change_password [OLD NEW] [nobody]`. Prints "rc=CODE" in the end, after a word if
// a password of the tests is still in its memory although the library was not asked. With "nobody"
// it gives up root's rights before.
#include <unistd.h>

#include <cstring>

#include "agent/parser2.h"
#include "agent/session2.h"
#include "agent/utility2.h"
#include "api/vltapid.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/psmem.h"
#include "common/ut/secret.h"
#include "common/ut/strutil.h"
#include "tests/support/memory.h"
#include "utility/unx/psutpswd.h"

int main(int argc, char** argv) {
  ut::forbidCoreFiles();
  psMutexInit(&orcMutex);
  psMutexInit(&initMutex);
  static orcObj_t orc;
  static DVltApiDL library;
  static VEXCTrace trace;
  trcClass = &trace;
  gVltApiObjP = &library;
  if (newNlsGlobalObject() != 0) return 1;
  nlsSetPrefix("QRB");
  if (vexoSetOptions(&orc) != 0 || callNlinit(&orc) != 0) return 2;
  vexoInitTrace(&orc);
  if (library.Setup() != 0 || psDoVltSetUp(&orc) != 0) return 3;
  if (argc % 2 == 0 && ::setuid(65534) != 0) return 4;
  vexoOptionsInfo_t info = {};
  if (argc > 2 && !ut::copyText(info.oldPassword, argv[1])) return 5;
  if (argc > 2 && !ut::copyText(info.newPassword, argv[2])) return 6;
  for (int i = 1; i < argc; ++i) ut::wipe(argv[i], std::strlen(argv[i]));
  const int rc = support::deeper([&] { return psvexoPassWord(&orc, info); });
  // The library keeps copies of its own of what it was given.
  std::printf("%src=%d\n", rc == -1 && support::inMemory("MaRk-4711") ? "kept, " : "", rc);
}
