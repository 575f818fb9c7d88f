// linklist_test.cpp: the list against a vector.
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

}  // namespace
