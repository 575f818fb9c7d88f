// linklist_test.cpp: the list against a vector, and the routines for records that own something.
#include "common/ut/linklist.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

TEST(LinkedList, AgreesWithAVectorUnderRandomOperations) {
  SCOPED_TRACE("seed 20");
  std::mt19937 random(20);
  CLinkedList<int> list;
  std::vector<int> oracle;
  for (int step = 0; step < 6000; ++step) {
    const auto dice = random() % 1000;
    const std::size_t at = oracle.empty() ? 0 : random() % oracle.size();
    if (dice < 3) {
      EXPECT_EQ(list.freeAll(), 0);
      oracle.clear();
    } else if (dice < 600 || oracle.empty()) {
      ASSERT_EQ(list.addTail(step, 0), 0);
      oracle.push_back(step);
    } else {
      ASSERT_EQ(*list.elementAt(at + 1), oracle[at]) << step;
      if (dice < 800) {
        const int* next = list.remove(list.elementAt(at + 1));
        oracle.erase(oracle.begin() + static_cast<std::ptrdiff_t>(at));
        ASSERT_EQ(next == nullptr ? -1 : *next, at == oracle.size() ? -1 : oracle[at]) << step;
      }
    }
    ASSERT_EQ(list.count(), static_cast<int>(oracle.size())) << step;
    ASSERT_EQ(list.elementAt(oracle.size() + 1), nullptr) << step;
    ASSERT_EQ(list.elementAt(0), list.getFirst()) << "0 is taken as 1";
    std::vector<int> walked;
    for (int* p = list.getFirst(); p != nullptr; p = list.getNext(p)) walked.push_back(*p);
    ASSERT_EQ(walked, oracle) << step;
  }
  EXPECT_TRUE(list.getNext(nullptr) == nullptr && list.remove(nullptr) == nullptr);
}

struct Owner {
  int* owned;
};
int liveCopies = 0;

unsigned short copyOwner(Owner* to, const Owner* from) {
  if (from->owned == nullptr) return ut::kListNoMemory;
  to->owned = new int(*from->owned);
  return ++liveCopies, 0;
}
void freeOwner(Owner record) {
  if (record.owned != nullptr) --liveCopies;
  delete record.owned;
}

TEST(LinkedList, OwnsWhatItsCopyRoutineMakes) {
  int value = 5;
  {
    CLinkedList<Owner> list;
    list.setRoutines(freeOwner, copyOwner);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(list.addTail({&value}, 1), 0);
    EXPECT_EQ(list.addTail({nullptr}, 1), ut::kListNoMemory);
    ASSERT_EQ(list.count(), 4) << "the element is there all the same";
    EXPECT_EQ(list.elementAt(4)->owned, nullptr) << "nothing of the caller's is freed with it";
    list.remove(list.getFirst());
    EXPECT_EQ(liveCopies, 2);
  }
  EXPECT_EQ(liveCopies, 0) << "the destructor frees";
}

}  // namespace
