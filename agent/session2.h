// session2.h: preparing the storage client library, and logging on to the storage server.
//
// Every failure of the library is reported in the same way: its text becomes the context's last
// error message and a line of the error log, and its code is returned.
#ifndef AGENT_SESSION2_H
#define AGENT_SESSION2_H

#include "agent/orcctx.h"
#include "api/vltlib.h"

// Prepares the library for this process: checks its version, sets it up, and settles who keeps the
// node's password. Normally the library does, and takes over the one in the agent's own legacy file
// if there is such a file. Under the test flag TEST_LEGACYPWD the client options decide.
// Returns 0, 2507, 2531, or the library's code.
[[nodiscard]] unsigned short psDoVltSetUp(orcObj_t* orc);

// Logs on and stores the session's handle and limits in the context. A server that does not answer
// (-50) is tried five times in all. Returns 0 or the code of the failure.
[[nodiscard]] unsigned short vexoSession(orcObj_t* orc);

// The set-up by itself, without passwords: for the agent's own start-up.
[[nodiscard]] unsigned short CallvltSetUp(orcObj_t* orc);

// Fills the record that the library is set up with.
void FillEnvSetUp(VltEnvSetUp* envSetUp, orcObj_t* orc);

namespace agent {

// Adds the options that make the library keep the password to the context's API options, unless
// they are there.
void addPasswordOptions(orcObj_t* orc);

// Fills the record of a logon; it refers to `orc`, `password` and `options` (may be null).
void fillLogon(VltInitExIn* in, const orcObj_t& orc, const char* password, const char* options);

}  // namespace agent

#endif  // AGENT_SESSION2_H
