// psmem.cpp: tracked memory allocation, see psmem.h. A header precedes each block.
#include "common/ut/psmem.h"

#include <sys/resource.h>
#if defined(__linux__)
#include <sys/prctl.h>
#elif defined(__FreeBSD__)
#include <sys/procctl.h>
#endif

#include <cstdlib>

#include "common/ut/agttrc.h"
#include "common/ut/psmutex.h"
#include "common/ut/result.h"
#include "common/ut/sanitized.h"

namespace {

// As strictly aligned as anything can be, so that the block after it is, too.
struct alignas(std::max_align_t) Header {
  Header* next;
  Header* previous;
  const char* file;
  std::size_t size;
  int line;
};

psMutex_t memoryMutex = {PTHREAD_MUTEX_INITIALIZER};
Header* firstBlock = nullptr;
ut::MemoryUse use = {0, 0, 0};

}  // namespace

void* psMalloc(const char* file, int line, std::size_t size) {
  auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
  if (header == nullptr) {
    TRACE(TR_MEM, " %s: no memory for %zu bytes at %s(%d)\n", "psMalloc()", size, file, line);
    return nullptr;
  }
  ut::MutexGuard guard(memoryMutex);
  *header = {firstBlock, nullptr, file, size, line};
  if (firstBlock != nullptr) firstBlock->previous = header;
  firstBlock = header;
  ++use.blocks;
  ++use.taken;
  use.bytes += size;
  return header + 1;
}

void psFree(const char* file, int line, void* block) {
  if (block == nullptr) return;
  Header* header = static_cast<Header*>(block) - 1;
  TRACE(TR_MEM, " %s: %zu bytes of %s(%d) at %s(%d)\n", "psFree()", header->size, header->file,
        header->line, file, line);
  ut::MutexGuard guard(memoryMutex);
  (header->previous == nullptr ? firstBlock : header->previous->next) = header->next;
  if (header->next != nullptr) header->next->previous = header->previous;
  --use.blocks;
  use.bytes -= header->size;
  std::free(header);
}

ut::MemoryUse ut::trackedMemory() {
  MutexGuard guard(memoryMutex);
  const MemoryUse pooled = pooledMemory == nullptr ? MemoryUse{0, 0, 0} : pooledMemory();
  return {use.blocks + pooled.blocks, use.bytes + pooled.bytes, use.taken + pooled.taken};
}

void ut::forbidCoreFiles() {
  const struct rlimit none = {0, 0};
  ignoreResult(::setrlimit(RLIMIT_CORE, &none), "lowering a limit is always allowed");
#if defined(VEXO_ADDRESS_SANITIZER)
  // See psmem.h.
#elif defined(__linux__)
  ignoreResult(::prctl(PR_SET_DUMPABLE, 0L, 0L, 0L, 0L), "always allowed");
#elif defined(__FreeBSD__)
  int forbidden = PROC_TRACE_CTL_DISABLE;
  ignoreResult(::procctl(P_PID, 0, PROC_TRACE_CTL, &forbidden), "always allowed");
#endif
}
