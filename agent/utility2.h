// utility2.h: what happens between the options file and the first command: the message system, the
// trace, the version check of the storage client library.
#ifndef AGENT_UTILITY2_H
#define AGENT_UTILITY2_H

#include <cstdint>
#include <string>

#include "agent/orcctx.h"
#include "common/ut/psmutex.h"

// Serialise the agent's initialisation; the entry code initialises them first of all.
extern psMutex_t orcMutex;
extern psMutex_t initMutex;

// Starts the message system with the run's language and formats. Returns 0; on failure the reason
// is in the error log and on standard error, the message object is gone, and nlinit's code is
// returned.
[[nodiscard]] unsigned short callNlinit(orcObj_t* orc);

// Sets the test flags and starts tracing as the options say. Failures are shown and logged; the
// run goes on without a trace.
void vexoInitTrace(orcObj_t* orc);

// Writes versions and options to the trace, while the trace prefix is switched on.
void vexoTraceHeaderInfo(orcObj_t* orc);

// 0 if the storage client library is new enough; else shows and logs messages 2572 and 2573, and
// returns 2507.
[[nodiscard]] unsigned short vexoCheck_API_Level();

// Normalises the filespace name: the default if it is empty, a "/" in front if there is none, and
// none at the end.
void vexoCheckFS(orcObj_t* orc);

// The library's text for a return code; `out` has room for kMessageSize bytes. With
// `withIdentifier` the text begins with its identifier.
void vexoGetApiMsg(unsigned handle, unsigned char withIdentifier, short rc, char* out);

namespace agent {

// The library's text for a return code, or `fallback` if it has none.
std::string libraryText(std::uint32_t handle, std::int16_t rc, const std::string& fallback);

// What is said of a code of the library without a text: the function that returned it, and the
// code.
std::string withoutText(const char* function, std::int16_t rc);

}  // namespace agent

// The default catalog's file name; `language` is not used. `out` has room for 64 bytes.
void psgetMsgFileName(const char* language, char* out);

namespace agent {

inline constexpr char kDefaultFileSpace[] = "/marlorc";
inline constexpr int kMessageCache = 10;  // fetched messages kept in memory
inline constexpr int kClientType = 10;    // of this program, for the message system

}  // namespace agent

#endif  // AGENT_UTILITY2_H
