// psmem.h: tracked memory allocation.
//
// Every block records the source file and line that asked for it, and is on one list until it is
// freed, so that a debugger or the memory trace shows what a long run still holds. A block that is
// leaked on purpose is still reachable through that list. Thread-safe.
#ifndef COMMON_UT_PSMEM_H
#define COMMON_UT_PSMEM_H

#include <cstddef>

// `size` bytes, suitably aligned for anything; null when there is no memory. `file` must outlive
// the block (a string literal).
[[nodiscard]] void* psMalloc(const char* file, int line, std::size_t size);

// Frees a block of psMalloc; null is ignored.
void psFree(const char* file, int line, void* block);

namespace ut {

struct MemoryUse {
  std::size_t blocks, bytes;
  std::size_t taken;  // blocks that were ever allocated
};

// What is allocated through psMalloc at this moment, and what pooledMemory adds.
MemoryUse trackedMemory();

// Set by an allocator that cuts psMalloc's blocks into parts: by how much its parts exceed those
// blocks. The numbers may be negative, and then wrap. Null while there is no such allocator.
inline MemoryUse (*pooledMemory)() = nullptr;

// Forbids core files of this process and of the programs that it starts: a core file would hold
// the passwords that are in memory. The limit alone does not hold where cores are piped to a
// program, so on Linux and FreeBSD the process cannot be dumped at all; that also keeps it from
// being traced by others. Under the address sanitizer only the limit is set: its leak check traces
// the process.
void forbidCoreFiles();

}  // namespace ut

#endif  // COMMON_UT_PSMEM_H
