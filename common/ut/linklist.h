// linklist.h: CLinkedList, the doubly linked list that owns copies of its records.
//
// Elements belong to the list alone. A data pointer that it hands out is valid until remove,
// freeAll or the destructor takes that element out. The data is the first member of its element, so
// a data pointer is the element's address as well: getNext and remove need no search.
//
// elementAt does not walk the list either. Its first call makes a table of all elements, which
// every change of the list drops; only without memory for the table does it walk.
#ifndef COMMON_UT_LINKLIST_H
#define COMMON_UT_LINKLIST_H

#include <cstddef>
#include <new>
#include <type_traits>
#include <vector>

#include "common/ut/agttrc.h"

namespace ut {

inline constexpr unsigned short kListNoMemory = 102;

// The list's trace lines name "linklist" as their source, whichever file includes this header.
//
// "Insufficent" is misspelt in two of them. Kept on purpose, pinned by
// LinkedList.TracesThatMemoryRanOut.
#define LIST_TRACE(...) TRACE_AS(TR_LINKEDLIST, "linklist", __VA_ARGS__)

}  // namespace ut

template <typename T>
class CLinkedList {
 public:
  struct Element {
    T data;
    Element* pNext;
    Element* pPrevious;
  };
  using DataFreeRoutine = void (*)(T data);
  using DataCopyRoutine = unsigned short (*)(T* to, const T* from);

  CLinkedList() {
    LIST_TRACE("Enter %s\n", "CLinkedList::CLinkedList()");
    LIST_TRACE("Exit %s\n", "CLinkedList::CLinkedList()");
  }
  ~CLinkedList() {
    LIST_TRACE("Enter %s\n", "CLinkedList::~CLinkedList()");
    [[maybe_unused]] const unsigned short rc = freeAll();
    LIST_TRACE("Exit %s, rc (not returned to caller) = %d\n", "CLinkedList::~CLinkedList()", rc);
  }
  CLinkedList(const CLinkedList&) = delete;
  CLinkedList& operator=(const CLinkedList&) = delete;

  // The first element's data, or null.
  T* getFirst() const {
    LIST_TRACE("Enter %s\n", "CLinkedList::getFirst()");
    LIST_TRACE("Exit %s\n", "CLinkedList::getFirst()");
    return m_pHead == nullptr ? nullptr : &m_pHead->data;
  }

  // The data of the element after `pData`; null at the end and for null.
  T* getNext(const T* pData) const {
    LIST_TRACE("Enter %s\n", "CLinkedList::getNext()");
    Element* next = pData == nullptr ? nullptr : elementOf(pData)->pNext;
    LIST_TRACE("Exit %s\n", "CLinkedList::getNext()");
    return next == nullptr ? nullptr : &next->data;
  }

  // Appends a copy of `data`. With `useCopyRoutine` 1 the copy routine, if one is set, makes it
  // from the caller's record. Returns 0, 102 without memory (the list is unchanged), or the copy
  // routine's code (the element is in the list even then).
  [[nodiscard]] unsigned short addTail(const T& data, int useCopyRoutine) {
    LIST_TRACE("Enter %s\n", "CLinkedList::addTail()");
    auto* element = static_cast<Element*>(::operator new(sizeof(Element), std::nothrow));
    if (element == nullptr) {
      LIST_TRACE("Insufficent memory, NEW() failed.\n");
      LIST_TRACE("Exit %s, rc = %d\n", "CLinkedList::addTail()", ut::kListNoMemory);
      return ut::kListNoMemory;
    }
    dropTable();
    ++m_nCount;
    const unsigned short rc = fill(element, data, useCopyRoutine);
    element->pNext = nullptr;
    element->pPrevious = m_pTail;
    (m_pTail == nullptr ? m_pHead : m_pTail->pNext) = element;
    m_pTail = element;
    LIST_TRACE("Exit %s, rc = %d\n", "CLinkedList::addTail()", rc);
    return rc;
  }

  // Unlinks and frees the element of `pData`, which must be in this list, and returns the data of
  // the one that followed it, or null. Null for null.
  T* remove(T* pData) {
    LIST_TRACE("Enter %s\n", "CLinkedList::remove()");
    if (pData == nullptr) {
      LIST_TRACE("Exit %s\n", "CLinkedList::remove()");
      return nullptr;
    }
    dropTable();
    Element* element = elementOf(pData);
    Element* next = element->pNext;
    (element->pPrevious == nullptr ? m_pHead : element->pPrevious->pNext) = next;
    (next == nullptr ? m_pTail : next->pPrevious) = element->pPrevious;
    release(element);
    --m_nCount;
    LIST_TRACE("Exit %s\n", "CLinkedList::remove()");
    return next == nullptr ? nullptr : &next->data;
  }

  // Frees every element. Returns 0.
  unsigned short freeAll() {
    LIST_TRACE("Enter %s - %#lx\n  m_pHead: %#lx\n  m_pTail: %#lx\n", "CLinkedList::freeAll()",
               address(this), address(m_pHead), address(m_pTail));
    dropTable();
    while (m_pHead != nullptr) {
      Element* element = m_pHead;
      m_pHead = element->pNext;
      release(element);
    }
    m_pTail = nullptr;
    m_nCount = 0;
    LIST_TRACE("Exit %s, rc = %d\n  m_pHead: %#lx\n  m_pTail: %#lx\n", "CLinkedList::freeAll()", 0,
               address(m_pHead), address(m_pTail));
    return 0;
  }

  // The data at a position counted from 1; null past the end. 0 counts as 1. Kept on purpose,
  // pinned by LinkedList.AgreesWithAVectorUnderRandomOperations.
  T* elementAt(std::size_t position) const {
    if (position == 0) position = 1;
    if (position > static_cast<std::size_t>(m_nCount)) return nullptr;
    if (makeTable()) return &table_[position - 1]->data;
    Element* element = m_pHead;
    while (--position > 0) element = element->pNext;
    return &element->data;
  }

  int count() const { return m_nCount; }

  // Routines for records that own memory of their own. Null, the default: records are copied as
  // plain memory, and nothing but the element is freed.
  void setRoutines(DataFreeRoutine freeRoutine, DataCopyRoutine copyRoutine) {
    m_lpDataFreeRtn = freeRoutine;
    m_lpDataCopyRtn = copyRoutine;
  }

 private:
  static_assert(std::is_trivially_copyable_v<T>, "records are copied as plain memory");
  static_assert(std::is_standard_layout_v<T>, "a data pointer is its element's address");

  static Element* elementOf(const T* pData) {
    return reinterpret_cast<Element*>(const_cast<T*>(pData));
  }
  static unsigned long address(const void* pointer) {
    return reinterpret_cast<unsigned long>(pointer);
  }

  unsigned short fill(Element* element, const T& data, int useCopyRoutine) {
    if (useCopyRoutine != 1 || m_lpDataCopyRtn == nullptr) {
      ::new (&element->data) T(data);
      return 0;
    }
    const unsigned short rc = m_lpDataCopyRtn(::new (&element->data) T(), &data);
    if (rc == ut::kListNoMemory) {
      LIST_TRACE("Insufficent memory,  m_lpDataCopyRtn() failed.\n");
    }
    return rc;
  }

  void release(Element* element) {
    if (m_lpDataFreeRtn != nullptr) m_lpDataFreeRtn(element->data);
    ::operator delete(element);
  }

  bool makeTable() const {
    if (!table_.empty()) return true;
    try {
      table_.reserve(static_cast<std::size_t>(m_nCount));
    } catch (const std::bad_alloc&) {
      return false;
    }
    for (Element* element = m_pHead; element != nullptr; element = element->pNext) {
      table_.push_back(element);
    }
    return true;
  }
  void dropTable() {
    if (!table_.empty()) std::vector<Element*>().swap(table_);
  }

  Element* m_pHead = nullptr;
  Element* m_pTail = nullptr;
  DataFreeRoutine m_lpDataFreeRtn = nullptr;
  DataCopyRoutine m_lpDataCopyRtn = nullptr;
  int m_nCount = 0;
  mutable std::vector<Element*> table_;
};

#endif  // COMMON_UT_LINKLIST_H
