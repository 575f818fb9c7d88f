// password.h: the agent's own password file.
//
// The directory is VEXO_PSWDPATH, else the agent's; the file is "VEXO." and the node's name.
//
//   offset 0   39 bytes   "Agent for Oracle Backup - Password file"
//          39  9 bytes a chunk, to the end of the file:
//                1 byte   "1" to "8": how many bytes of the password the chunk holds
//                8 bytes  those bytes, padded with zeros, enciphered with the node's key
//
// The key is made by the storage client library from the node's name; it is stored nowhere.
#ifndef AGENT_PASSWORD_H
#define AGENT_PASSWORD_H

#include "agent/orcctx.h"

// The directory and the whole name of the node's password file; both have room for
// agent::kPasswordPathSize bytes.
void psvexoGetFileName(char* dir, char* path, orcObj_t* orc);

// The node's key, two words.
void psvexoSetKey(unsigned int* key, orcObj_t* orc);

// Reads the node's password, at most 64 characters, into `password` (kPasswordSize bytes). With
// `renameAfterRead` not 0 the file is then renamed to end in ".save", and the log says so and how
// to put it back; if that fails, it is shown and logged, and nothing else changes. Returns 0 or
// 168.
[[nodiscard]] short psvexoReadPswd(char* password, orcObj_t* orc, int renameAfterRead);

// Reads a password file with a key, after setting its mode to 0644 if it is this user's to set. The
// heading is not compared, and a chunk that the end of the file cuts short is ignored. Returns 0,
// or 168 if the file is missing, no plain file, or cannot be opened. A link is no plain file: it
// could make somebody else's secret readable for all.
[[nodiscard]] short psvexoReadPswdFromFile(const char* path, char* password, unsigned int* key);

// Stores the node's password. Returns the codes of psvexoWritePswdToFile.
[[nodiscard]] short psvexoUpdatePswd(const char* password, orcObj_t* orc);

// Writes a password file with a key, mode 0644. An old one is replaced as a whole, once the new one
// is complete; its owner and group are kept if this user may give files away. A link to a plain
// file is followed if it belongs to root, to this user or to that file's owner. The last level of
// `dir` is created, with mode 0700, if it is missing. Returns 0; 2521 if the directory cannot be
// opened; 167 if it cannot be created; or -1 if the file cannot be written.
[[nodiscard]] short psvexoWritePswdToFile(const char* dir, const char* path, const char* password,
                                          unsigned int* key);

namespace agent {
inline constexpr std::size_t kPasswordPathSize = 1152;
}

#endif  // AGENT_PASSWORD_H
