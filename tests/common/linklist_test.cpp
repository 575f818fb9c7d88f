// linklist_test.cpp: the list against a vector.
#include "common/ut/linklist.h"

#include <gtest/gtest.h>

#include <random>

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
      EXPECT_EQ(0, list.freeAll());
      oracle.clear();
    } else if (dice < 600 || oracle.empty()) {
      ASSERT_EQ(0, list.addTail(step, 0));
      oracle.push_back(step);
    } else {
      ASSERT_EQ(oracle[at], *list.elementAt(at + 1)) << step;
      if (dice < 800) {
        const int* next = list.remove(list.elementAt(at + 1));
        oracle.erase(oracle.begin() + static_cast<std::ptrdiff_t>(at));
        ASSERT_EQ(at == oracle.size() ? -1 : oracle[at], next == nullptr ? -1 : *next) << step;
      }
    }
    ASSERT_EQ(static_cast<int>(oracle.size()), list.count()) << step;
    ASSERT_EQ(nullptr, list.elementAt(oracle.size() + 1)) << step;
    ASSERT_EQ(list.getFirst(), list.elementAt(0)) << "0 means 1";
    std::vector<int> walked;
    for (int* p = list.getFirst(); p != nullptr; p = list.getNext(p)) walked.push_back(*p);
    ASSERT_EQ(oracle, walked) << step;
  }
  EXPECT_EQ(nullptr, list.getNext(nullptr));
  EXPECT_EQ(nullptr, list.remove(nullptr));
}

}  // namespace
