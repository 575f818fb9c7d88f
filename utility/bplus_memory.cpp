// bplus_memory.cpp: the search tree's allocator: very many blocks of a few sizes.
//
// Blocks of one size share pages and return to a list of free blocks of that size, so that a block
// takes its own bytes and little else, and allocating one moves a few pointers. Pages are aligned
// to their own size: a block's address gives its page, and the page its size.
//
//   arena   1 MB of the tracked allocation, cut into pages; never given back
//   page    16 KB: its header, then blocks of one size
//
// Under the address sanitizer what is free is out of bounds, and so is a gap after each block: the
// sanitizer reports whoever reads or writes there. Not thread-safe, like the tree.
#include <cstdint>
#include <cstring>
#include <iterator>

#include "common/ut/psmem.h"
#include "common/ut/sanitized.h"
#include "utility/bplus.h"

namespace {

constexpr std::size_t kPageSize = std::size_t{16} << 10;
constexpr std::size_t kArenaSize = std::size_t{1} << 20;
constexpr std::size_t kArenaBlock = kArenaSize + kPageSize;  // room to align the pages
constexpr std::size_t kStep = 2;                             // sizes are rounded up to it
constexpr std::size_t kGap = ut::kSanitized ? 16 : 0;        // after each block
constexpr std::size_t kLargest = 1024;                       // larger blocks have their own pages

struct alignas(64) Page {  // so that blocks of 64 bytes are lines of the cache
  std::size_t blockSize;
  void* whole;  // of a large block: the tracked allocation's block, else null
};

// The blocks of one size.
struct Size {
  char* freed;  // linked through the blocks' first bytes
  char* next;   // from here to `end`: never used yet
  char* end;
  std::size_t taken, returned;  // blocks, ever
};

Size sizes[kLargest / kStep + 1];
char* pages = nullptr;  // of the newest arena: pages that have no size yet
char* pagesEnd = nullptr;
std::size_t arenas = 0;

// What the blocks in use take, less what their arenas take: see ut::pooledMemory.
ut::MemoryUse usedBlocks() {
  ut::MemoryUse use = {0 - arenas, 0 - arenas * kArenaBlock, 0 - arenas};
  for (std::size_t i = 0; i < std::size(sizes); ++i) {
    const std::size_t used = sizes[i].taken - sizes[i].returned;
    use.blocks += used;
    use.bytes += used * i * kStep;
    use.taken += sizes[i].taken;
  }
  return use;
}

char* alignedUp(void* memory) {
  auto* address = static_cast<char*>(memory);
  const std::size_t beyond = reinterpret_cast<std::uintptr_t>(address) % kPageSize;
  return beyond == 0 ? address : address + (kPageSize - beyond);
}

Page* pageOf(void* block) {
  auto* address = static_cast<char*>(block);
  return reinterpret_cast<Page*>(address - reinterpret_cast<std::uintptr_t>(address) % kPageSize);
}

bool addPage(const char* file, int line, std::size_t blockSize, Size* blocks) {
  if (pages == pagesEnd) {
    void* arena = psMalloc(file, line, kArenaBlock);
    if (arena == nullptr) return false;
    ++arenas;
    ut::pooledMemory = usedBlocks;
    pages = alignedUp(arena);
    pagesEnd = pages + kArenaSize;
    ut::forbidAccess(pages, kArenaSize);
  }
  char* page = pages;
  pages += kPageSize;
  ut::allowAccess(page, sizeof(Page));
  *reinterpret_cast<Page*>(page) = {blockSize, nullptr};
  blocks->next = page + sizeof(Page);
  blocks->end = blocks->next + (kPageSize - sizeof(Page)) / blockSize * blockSize;
  return true;
}

void* allocateLarge(const char* file, int line, std::size_t size) {
  const std::size_t total = size + sizeof(Page) + kPageSize;
  void* whole = psMalloc(file, line, total);
  if (whole == nullptr) return nullptr;
  auto* page = reinterpret_cast<Page*>(alignedUp(whole));
  *page = {size, whole};
  char* block = reinterpret_cast<char*>(page + 1);
  const std::size_t before = static_cast<std::size_t>(block - static_cast<char*>(whole)) + size;
  ut::forbidAccess(block + size, total - before);
  return block;
}

}  // namespace

void* BTreeMalloc(const char* file, int line, std::size_t size) {
  if (size == 0) return nullptr;
  if (size > kLargest - kGap) return allocateLarge(file, line, size);
  // A free block holds the link to the next one.
  const std::size_t used = size < sizeof(char*) ? sizeof(char*) : size;
  const std::size_t rounded = (used + kStep - 1) / kStep * kStep + kGap;
  Size& blocks = sizes[rounded / kStep];
  char* block = blocks.freed;
  if (block != nullptr) {
    ut::allowAccess(block, used);
    std::memcpy(&blocks.freed, block, sizeof blocks.freed);
  } else {
    if (blocks.next == blocks.end && !addPage(file, line, rounded, &blocks)) return nullptr;
    block = blocks.next;
    blocks.next += rounded;
    ut::allowAccess(block, used);
  }
  ++blocks.taken;
  return block;
}

void BTreeFree(const char* file, int line, void** pointer) {
  if (pointer == nullptr || *pointer == nullptr) return;
  void* block = *pointer;
  *pointer = nullptr;
  Page* page = pageOf(block);
  if (page->whole != nullptr) {
    psFree(file, line, page->whole);
    return;
  }
  Size& blocks = sizes[page->blockSize / kStep];
  std::memcpy(block, &blocks.freed, sizeof blocks.freed);
  blocks.freed = static_cast<char*>(block);
  ut::forbidAccess(block, page->blockSize);
  ++blocks.returned;
}
