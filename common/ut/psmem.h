// psmem.h: tracked memory allocation.
//
// Every block knows the source file and line that asked for it and hangs in one list until it is
// freed, so that a debugger or the memory trace shows what a long run still holds. A block that
// is never freed on purpose stays reachable through that list.
// Safe to call from several threads.
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

// For an allocator that cuts blocks of psMalloc into parts: what its parts take more than the
// blocks that were cut (the numbers may be below 0, and wrap). Null while there is none.
inline MemoryUse (*pooledMemory)() = nullptr;

// From now on no core file of this process, and of what it starts, is written: it would hold the
// passwords that are in memory.
void forbidCoreFiles();

}  // namespace ut

#endif  // COMMON_UT_PSMEM_H
