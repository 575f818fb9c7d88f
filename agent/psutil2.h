// psutil2.h: the agent's fixed locations, the host and the user.
//
// Each fills `out` (of `size` bytes) and returns 0, or 1702 if the text does not fit; `out` is then
// empty.
#ifndef AGENT_PSUTIL2_H
#define AGENT_PSUTIL2_H

#include <cstddef>

// The storage client library's directory.
[[nodiscard]] unsigned short psvexoGetVltiDir(char* out, std::size_t size);

// The agent's installation directory.
[[nodiscard]] unsigned short psvexoGetVexoDir(char* out, std::size_t size);

// vexo.opt in the agent's installation directory.
[[nodiscard]] unsigned short psvexoGetDefaultOptfile(char* out, std::size_t size);

// The storage client's default options file: the environment variable VLTI_CONFIG, else vlt.opt in
// the agent's directory.
[[nodiscard]] unsigned short psvexoGetVltiConfig(char* out, std::size_t size);

// The host's name, cut after 64 characters; empty if the system does not tell.
[[nodiscard]] unsigned short psvexoGetNodeName(char* out, std::size_t size);

// The login name of the process's real user; empty for root, and for a user without a name.
[[nodiscard]] unsigned short psvexoGetOwnerName(char* out, std::size_t size);

// The process's number.
int psvexoGetID();

#endif  // AGENT_PSUTIL2_H
