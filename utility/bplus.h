// bplus.h: dsBPlusTree, the in-memory search tree of file names.
//
// Items are opaque bytes, ordered by the caller's comparison; the tree stores its own copies, made
// by the caller's copy function. It is a B-tree of order 6, whatever its name says: every node
// holds items, and leaves are not linked. Items are never removed one by one. Not thread-safe: the
// functions of a call are kept in the tree.
#ifndef UTILITY_BPLUS_H
#define UTILITY_BPLUS_H

#include <cstddef>
#include <cstdint>

// The searched item compared with a stored one.
enum compare_t { bEqualTo = 0, bGreaterThan = 1, bLessThan = 2 };

// One item while it is inserted.
struct bData_t {
  std::uint32_t size;  // bytes
  void* data;
};

inline constexpr int kMaxItems = 5;    // in a node
inline constexpr int kSplitPoint = 2;  // the fewest in a node but the root

// A node. Sizes and items are two arrays, so that a leaf fills one line of the processor's cache:
// most nodes are leaves, and a look-up mostly waits for memory. The children of an inner node
// follow in bInnerNode_t.
//
//   count 1..5 (the root), 2..5 (all others); items are sorted; all leaves are at the same depth
struct bNodeType_t {
  std::int16_t count;             // items in use
  std::int16_t leaf;              // 1: no children
  std::uint32_t size[kMaxItems];  // of each item, in bytes
  void* data[kMaxItems];          // owned; null until an item is stored there
};

struct bInnerNode_t : bNodeType_t {
  bNodeType_t* child[kMaxItems + 1];  // child[i]: what sorts after item i-1 and before item i
};

// Results of an insertion.
inline constexpr short kTreeStored = 0;
inline constexpr short kTreeNoMemory = 10;
inline constexpr short DUP_VAL = 11;  // an equal item is there already, nothing was changed
inline constexpr short PUSH_UP = 12;  // between the steps only: an item rises to the parent
// Between the steps only: the copy function failed. Its own code may be any number, 11 and 12
// included, which mean something else between the steps.
inline constexpr short kTreeNotCopied = 13;

class dsBPlusTree {
 public:
  // Copies an item into a buffer of the size that was given with it; 0, or a code that becomes the
  // insertion's result.
  using CopyFn = unsigned short (*)(void* from, void* to);
  // Compares the searched item with a stored one.
  using CompareFn = compare_t (*)(void* searched, void* stored);

  dsBPlusTree();
  // `freeFn` is only kept: the tree frees its storage itself.
  explicit dsBPlusTree(void (*freeFn)(void*));
  ~dsBPlusTree();
  dsBPlusTree(const dsBPlusTree&) = delete;
  dsBPlusTree& operator=(const dsBPlusTree&) = delete;

  // Stores a copy of `item`, `size` bytes. Returns kTreeStored, kTreeNoMemory, DUP_VAL, or what
  // `copyFn` returned, whatever that is. After any failure except DUP_VAL a node may be half
  // shifted: the tree can then only be destroyed, which releases all its blocks. (The missing n in
  // the name is part of the interface.)
  [[nodiscard]] short IsertItem(void* item, int size, CopyFn copyFn, CompareFn compareFn);

  // The tree's own copy of the item that equals `item`; null if it has none.
  void* SearchItem(void* item, CompareFn compareFn);

 private:
  // What a step passes up to its parent with PUSH_UP.
  struct Risen {
    bData_t item = {0, nullptr};
    bNodeType_t* right = nullptr;
  };

  void* SearchTree(void* item, bNodeType_t* node);
  bool SeenLately(const bNodeType_t* node);
  bool SearchNode(void* item, bNodeType_t* node, int* position);
  short InsertNode(const bData_t& item);
  short PushDown(const bData_t& item, bNodeType_t* node, Risen* risen);
  short PushIn(const bData_t& item, bNodeType_t* rightSibling, bNodeType_t* node, int position);
  short Split(const bData_t& item, bNodeType_t* rightSibling, bNodeType_t* node, int position,
              Risen* risen);
  short Store(const bData_t& item, bNodeType_t* node, int slot);
  short Move(bNodeType_t* from, int slot, bNodeType_t* to, int toSlot);
  static bNodeType_t* NewNode(bool leaf);
  void FreeMemory(bNodeType_t* node);

  static constexpr std::size_t kSeen = 512;

  bNodeType_t* root_ = nullptr;
  const bNodeType_t* seen_[kSeen] = {};  // by address; what is never deleted cannot go stale
  CompareFn compareFn_ = nullptr;
  CopyFn copyFn_ = nullptr;
  short copyRc_ = 0;  // of kTreeNotCopied

 protected:
  void (*freeFn_)(void*) = nullptr;
};

// The tree's allocator (bplus_memory.cpp): `size` bytes tagged with the place that asked; null for
// 0 or without memory. A block is aligned to the largest power of two that divides `size`, at most
// 16: enough for any object of that size.
[[nodiscard]] void* BTreeMalloc(const char* file, int line, std::size_t size);

// Releases what `*pointer` points at and sets it to null; null addresses are ignored.
void BTreeFree(const char* file, int line, void** pointer);

#endif  // UTILITY_BPLUS_H
