// bplus.cpp: the search tree of file names, see bplus.h.
#include "utility/bplus.h"

#include "common/ut/psmem.h"
#include "common/ut/strutil.h"
#include "common/ut/trace.h"

void* BTreeMalloc(const char* file, int line, std::size_t size) {
  return size == 0 ? nullptr : psMalloc(file, line, size);
}

void BTreeFree(const char* file, int line, void** pointer) {
  if (pointer == nullptr || *pointer == nullptr) return;
  psFree(file, line, *pointer);
  *pointer = nullptr;
}

namespace {

template <typename T>
void release(T** pointer) {
  void* address = *pointer;
  BTreeFree(__FILE__, __LINE__, &address);
  *pointer = nullptr;
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
    if (SearchNode(item, node, &position)) return node->item[position]->data;
    node = node->child[position];
  }
  return nullptr;
}

// True when the node holds the item, at `*position`; else the item belongs below child[*position].
bool dsBPlusTree::SearchNode(void* item, bNodeType_t* node, int* position) {
  *position = 0;
  if (compareFn_(item, node->item[0]->data) == bLessThan) return false;
  compare_t result = bGreaterThan;
  while (*position < node->count) {
    result = compareFn_(item, node->item[*position]->data);
    if (result != bGreaterThan) break;
    ++*position;
  }
  return result == bEqualTo;
}

// ---- Insertion ----------------------------------------------------------------------------------

short dsBPlusTree::IsertItem(void* item, int size, CopyFn copyFn, CompareFn compareFn) {
  copyFn_ = copyFn;
  compareFn_ = compareFn;
  bData_t staged = {static_cast<std::uint32_t>(size), nullptr};
  if (size > 0) staged.data = BTreeMalloc(__FILE__, __LINE__, static_cast<std::size_t>(size));
  if (staged.data == nullptr) return kTreeNoMemory;
  ut::ignoreResult(copyFn_(item, staged.data), "the copies that are stored are checked");
  // The staging buffer is not released: each insertion costs it, and the memory figures of sites
  // reckon with that. It stays known to the tracked allocation.
  return InsertNode(&staged);
}

short dsBPlusTree::InsertNode(bData_t* item) {
  Risen risen;
  const short rc = PushDown(item, root_, &risen);
  if (rc == DUP_VAL) {
    TRACE(TR_ALL, " %s: Exit - duplicat value\n", "InsertNode()");
    return rc;
  }
  if (rc != PUSH_UP) return rc;
  bNodeType_t* node = NewNode();
  const short stored = node == nullptr ? kTreeNoMemory : Store(*risen.item, node->item[0]);
  if (stored != kTreeStored) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - no memory\n", "InsertNode()");
    FreeMemory(node);
    return stored;
  }
  node->count = 1;
  node->child[0] = root_;
  node->child[1] = risen.right;
  root_ = node;
  return kTreeStored;
}

short dsBPlusTree::PushDown(bData_t* item, bNodeType_t* node, Risen* risen) {
  if (node == nullptr) {  // below a leaf: the item itself rises
    *risen = {item, nullptr};
    return PUSH_UP;
  }
  int position = 0;
  if (SearchNode(item->data, node, &position)) {
    TRACE(TR_ALL, " %s: Exit - return DUP_VAL\n", "PushDown()");
    return DUP_VAL;
  }
  const short rc = PushDown(item, node->child[position], risen);
  if (rc != PUSH_UP) return rc;
  if (node->count < kMaxItems) return PushIn(risen->item, risen->right, node, position);
  const short split = Split(risen->item, risen->right, node, position, risen);
  if (split != kTreeStored) return split;
  TRACE(TR_ALL, " %s: Exit - return PUSH_UP\n", "PushDown()");
  return PUSH_UP;
}

// Copies an item into a slot. A buffer that an item left behind when it rose is used again if it
// is large enough.
short dsBPlusTree::Store(const bData_t& item, bData_t* slot) {
  if (slot->data != nullptr && slot->size < item.size) release(&slot->data);
  if (slot->data == nullptr) slot->data = BTreeMalloc(__FILE__, __LINE__, item.size);
  if (slot->data == nullptr) return kTreeNoMemory;
  slot->size = item.size;
  return static_cast<short>(copyFn_(item.data, slot->data));
}

// Moves an item to another slot, by a copy of its bytes.
short dsBPlusTree::Move(bData_t* from, bData_t* to) {
  const short rc = Store(*from, to);
  if (rc == kTreeStored) release(&from->data);
  return rc;
}

short dsBPlusTree::PushIn(bData_t* item, bNodeType_t* rightSibling, bNodeType_t* node,
                          int position) {
  for (int i = node->count - 1; i >= position; --i) {
    if (const short rc = Move(node->item[i], node->item[i + 1]); rc != kTreeStored) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - NO MEMORY\n", "PushIn()");
      return rc;
    }
  }
  if (const short rc = Store(*item, node->item[position]); rc != kTreeStored) return rc;
  // Only now, when nothing can fail any more: a child must not stand twice in a node.
  for (int i = node->count; i > position; --i) node->child[i + 1] = node->child[i];
  node->child[position + 1] = rightSibling;
  ++node->count;
  return kTreeStored;
}

short dsBPlusTree::Split(bData_t* item, bNodeType_t* rightSibling, bNodeType_t* node, int position,
                         Risen* risen) {
  const int median = position <= kSplitPoint ? kSplitPoint : kSplitPoint + 1;
  bNodeType_t* right = NewNode();
  if (right == nullptr) return kTreeNoMemory;
  for (int i = median; i < kMaxItems; ++i) {
    if (const short rc = Move(node->item[i], right->item[i - median]); rc != kTreeStored) {
      return rc;
    }
    right->child[i - median + 1] = node->child[i + 1];
    node->child[i + 1] = nullptr;
  }
  node->count = static_cast<std::int16_t>(median);
  right->count = static_cast<std::int16_t>(kMaxItems - median);
  const short rc = position <= kSplitPoint ? PushIn(item, rightSibling, node, position)
                                           : PushIn(item, rightSibling, right, position - median);
  if (rc != kTreeStored) return rc;
  // The left node's last item rises. Its buffer stays in the slot until the parent has copied it.
  *risen = {node->item[node->count - 1], right};
  right->child[0] = node->child[node->count];
  node->child[node->count] = nullptr;
  --node->count;
  return kTreeStored;
}

// ---- Memory -------------------------------------------------------------------------------------

// A node with five empty slots and no children, or null.
bNodeType_t* dsBPlusTree::NewNode() {
  auto* node = static_cast<bNodeType_t*>(BTreeMalloc(__FILE__, __LINE__, sizeof(bNodeType_t)));
  if (node == nullptr) return nullptr;
  *node = {};
  for (bData_t*& slot : node->item) {
    slot = static_cast<bData_t*>(BTreeMalloc(__FILE__, __LINE__, sizeof(bData_t)));
    if (slot == nullptr) {
      for (bData_t*& made : node->item) release(&made);
      release(&node);
      return nullptr;
    }
    *slot = {0, nullptr};
  }
  return node;
}

void dsBPlusTree::FreeMemory(bNodeType_t* node) {
  if (node == nullptr) return;
  for (int i = 0; i <= kMaxItems && node->child[i] != nullptr; ++i) FreeMemory(node->child[i]);
  // Also the buffers that risen items left behind in slots beyond the count.
  for (bData_t*& slot : node->item) {
    release(&slot->data);
    release(&slot);
  }
  release(&node);
}
