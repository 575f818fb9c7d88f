// bplus.cpp: the search tree of file names, see bplus.h.
#include "utility/bplus.h"

#include <new>

#include "common/ut/agttrc.h"
#include "common/ut/result.h"

namespace {

void release(void** pointer) { BTreeFree(__FILE__, __LINE__, pointer); }

bNodeType_t*& childOf(bNodeType_t* node, int position) {
  return static_cast<bInnerNode_t*>(node)->child[position];
}

// Prefetches what the comparisons in a node, and the step below it, will read.
void fetchAhead(bNodeType_t* node) {
  for (int i = 0; i < node->count; ++i) __builtin_prefetch(node->data[i]);
  if (node->leaf != 0) return;
  for (int i = 0; i <= node->count; ++i) __builtin_prefetch(childOf(node, i));
}

}  // namespace

dsBPlusTree::dsBPlusTree() = default;

dsBPlusTree::dsBPlusTree(void (*freeFn)(void*)) : freeFn_(freeFn) {}

dsBPlusTree::~dsBPlusTree() { FreeMemory(root_); }

// ---- Search -------------------------------------------------------------------------------------

void* dsBPlusTree::SearchItem(void* item, CompareFn compareFn) {
  compareFn_ = compareFn;
  return SearchTree(item, root_);
}

void* dsBPlusTree::SearchTree(void* item, bNodeType_t* node) {
  while (node != nullptr) {
    int position = 0;
    if (SearchNode(item, node, &position)) return node->data[position];
    node = node->leaf != 0 ? nullptr : childOf(node, position);
  }
  return nullptr;
}

// In nearly sorted input the same nodes are searched again and again. What they hold is already in
// the processor's cache, and prefetching it again costs as much as comparing it.
bool dsBPlusTree::SeenLately(const bNodeType_t* node) {
  const bNodeType_t*& seen = seen_[reinterpret_cast<std::uintptr_t>(node) / sizeof *node % kSeen];
  if (seen == node) return true;
  seen = node;
  return false;
}

// True if the node holds the item, at `*position`; otherwise that is the child to search next. The
// first item is compared twice. Kept on purpose, pinned by
// BPlusTree.ComparesCopiesAndAllocatesExactlyAsOftenAsEver.
bool dsBPlusTree::SearchNode(void* item, bNodeType_t* node, int* position) {
  *position = 0;
  if (!SeenLately(node)) fetchAhead(node);
  const CompareFn compare = compareFn_;  // not read again for each item
  if (compare(item, node->data[0]) == bLessThan) return false;
  const int count = node->count;
  int at = 0;
  compare_t result = bGreaterThan;
  while (at < count && (result = compare(item, node->data[at])) == bGreaterThan) ++at;
  *position = at;
  return result == bEqualTo;
}

// ---- Insertion ----------------------------------------------------------------------------------

short dsBPlusTree::IsertItem(void* item, int size, CopyFn copyFn, CompareFn compareFn) {
  copyFn_ = copyFn;
  compareFn_ = compareFn;
  bData_t staged = {static_cast<std::uint32_t>(size), nullptr};
  if (size > 0) {
    staged.data = BTreeMalloc(__FILE__, __LINE__, static_cast<std::size_t>(size));
  }
  if (staged.data == nullptr) return kTreeNoMemory;
  ut::ignoreResult(copyFn_(item, staged.data), "the copies that are stored are checked");
  // The staging buffer is leaked on purpose, one per insertion, pinned by
  // BPlusTree.AgreesWithASetAndReleasesAllButAStagingBufferForEachInsertion. The tracked allocation
  // still knows it.
  const short rc = InsertNode(staged);
  return rc == kTreeNotCopied ? copyRc_ : rc;
}

short dsBPlusTree::InsertNode(const bData_t& item) {
  Risen risen;
  const short rc = PushDown(item, root_, &risen);
  if (rc == DUP_VAL) {
    TRACE(TR_ALL, " %s: Exit - duplicat value\n", "InsertNode()");
    return rc;
  }
  if (rc != PUSH_UP) return rc;
  bNodeType_t* node = NewNode(root_ == nullptr);
  const short stored = node == nullptr ? kTreeNoMemory : Store(risen.item, node, 0);
  if (stored != kTreeStored) {
    if (stored == kTreeNoMemory) TRACE(TR_ORCLEVEL0, " %s: Exit - no memory\n", "InsertNode()");
    FreeMemory(node);
    FreeMemory(risen.right);
    return stored;
  }
  node->count = 1;
  if (node->leaf == 0) {
    childOf(node, 0) = root_;
    childOf(node, 1) = risen.right;
  }
  root_ = node;
  return kTreeStored;
}

short dsBPlusTree::PushDown(const bData_t& item, bNodeType_t* node, Risen* risen) {
  if (node == nullptr) {  // below a leaf: the item itself rises
    *risen = {item, nullptr};
    return PUSH_UP;
  }
  int position = 0;
  if (SearchNode(item.data, node, &position)) {
    TRACE(TR_ALL, " %s: Exit - return DUP_VAL\n", "PushDown()");
    return DUP_VAL;
  }
  const short rc = PushDown(item, node->leaf != 0 ? nullptr : childOf(node, position), risen);
  if (rc != PUSH_UP) return rc;
  bNodeType_t* const right = risen->right;
  const bool full = node->count == kMaxItems;
  const short stored = full ? Split(risen->item, right, node, position, risen)
                            : PushIn(risen->item, right, node, position);
  if (stored != kTreeStored) FreeMemory(right);  // it is in no node
  if (stored != kTreeStored || !full) return stored;
  TRACE(TR_ALL, " %s: Exit - return PUSH_UP\n", "PushDown()");
  return PUSH_UP;
}

// Copies an item into a slot. An item that rose leaves its buffer in its old slot; it is used again
// if it is large enough.
short dsBPlusTree::Store(const bData_t& item, bNodeType_t* node, int slot) {
  void*& data = node->data[slot];
  if (data != nullptr && node->size[slot] < item.size) release(&data);
  if (data == nullptr) data = BTreeMalloc(__FILE__, __LINE__, item.size);
  if (data == nullptr) return kTreeNoMemory;
  node->size[slot] = item.size;
  copyRc_ = static_cast<short>(copyFn_(item.data, data));
  return copyRc_ == 0 ? kTreeStored : kTreeNotCopied;
}

// Moves an item to another slot, by a copy of its bytes.
short dsBPlusTree::Move(bNodeType_t* from, int slot, bNodeType_t* to, int toSlot) {
  const short rc = Store({from->size[slot], from->data[slot]}, to, toSlot);
  if (rc == kTreeStored) release(&from->data[slot]);
  return rc;
}

short dsBPlusTree::PushIn(const bData_t& item, bNodeType_t* rightSibling, bNodeType_t* node,
                          int position) {
  short rc = kTreeStored;
  for (int i = node->count - 1; rc == kTreeStored && i >= position; --i) {
    rc = Move(node, i, node, i + 1);
  }
  if (rc == kTreeStored) rc = Store(item, node, position);
  if (rc == kTreeNoMemory) TRACE(TR_ORCLEVEL0, " %s: Exit - NO MEMORY\n", "PushIn()");
  if (rc != kTreeStored) return rc;
  // Last, when nothing can fail any more: a child must never be in a node twice.
  if (node->leaf == 0) {
    for (int i = node->count; i > position; --i) childOf(node, i + 1) = childOf(node, i);
    childOf(node, position + 1) = rightSibling;
  }
  ++node->count;
  return kTreeStored;
}

short dsBPlusTree::Split(const bData_t& item, bNodeType_t* rightSibling, bNodeType_t* node,
                         int position, Risen* risen) {
  const int median = position <= kSplitPoint ? kSplitPoint : kSplitPoint + 1;
  const bool leaf = node->leaf != 0;
  bNodeType_t* right = NewNode(leaf);
  if (right == nullptr) return kTreeNoMemory;
  short rc = kTreeStored;
  for (int i = median; i < kMaxItems; ++i) {
    rc = Move(node, i, right, i - median);
    if (rc != kTreeStored) break;
    if (leaf) continue;
    childOf(right, i - median + 1) = childOf(node, i + 1);
    childOf(node, i + 1) = nullptr;
  }
  if (rc == kTreeStored) {
    node->count = static_cast<std::int16_t>(median);
    right->count = static_cast<std::int16_t>(kMaxItems - median);
    rc = position <= kSplitPoint ? PushIn(item, rightSibling, node, position)
                                 : PushIn(item, rightSibling, right, position - median);
  }
  if (rc != kTreeStored) {
    FreeMemory(right);  // with the children that it has by now
    return rc;
  }
  // The left node's last item rises. The slot keeps its buffer until the parent has copied it.
  const int last = node->count - 1;
  *risen = {{node->size[last], node->data[last]}, right};
  if (!leaf) {
    childOf(right, 0) = childOf(node, last + 1);
    childOf(node, last + 1) = nullptr;
  }
  node->count = static_cast<std::int16_t>(last);
  return kTreeStored;
}

// ---- Memory -------------------------------------------------------------------------------------

// A node with five empty slots and no children, or null.
bNodeType_t* dsBPlusTree::NewNode(bool leaf) {
  const std::size_t size = leaf ? sizeof(bNodeType_t) : sizeof(bInnerNode_t);
  void* memory = BTreeMalloc(__FILE__, __LINE__, size);
  if (memory == nullptr) return nullptr;
  if (leaf) return ::new (memory) bNodeType_t{0, 1, {}, {}};
  return ::new (memory) bInnerNode_t{};
}

void dsBPlusTree::FreeMemory(bNodeType_t* node) {
  if (node == nullptr) return;
  fetchAhead(node);
  if (node->leaf == 0) {
    // Past empty places too: a failed split leaves some between children.
    for (int i = 0; i <= kMaxItems; ++i) FreeMemory(childOf(node, i));
  }
  // Slots beyond the count may hold buffers that risen items left.
  for (void*& data : node->data) release(&data);
  void* memory = node;
  release(&memory);
}
