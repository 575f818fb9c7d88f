// psutpswd.h: the change of the node's password.
//
// No command of vexosync reaches it: the agent links it for its own use.
#ifndef UTILITY_UNX_PSUTPSWD_H
#define UTILITY_UNX_PSUTPSWD_H

#include "agent/orcctx.h"
#include "utility/utparser.h"

// Changes the password of the node on the storage server, and in the agent's own password file when
// the agent keeps one. Takes the passwords from the options if both are there, else asks. The
// library is set up; the session's handle is left in the context, ended. Returns 0 (even if the
// file could not be written: message 160), 2620, 2621, 2521, -1 when the prompting failed, or the
// library's code.
[[nodiscard]] short psvexoPassWord(orcObj_t* orc, vexoOptionsInfo_t& options);

// Asks for the old password once and for the new one twice; each buffer has kPasswordSize bytes.
// Returns 0 when all were given and the new ones agree, else -1, after a message.
[[nodiscard]] int getPwInput(char* oldPw, char* newPw, char* confirmPw);

#endif  // UTILITY_UNX_PSUTPSWD_H
