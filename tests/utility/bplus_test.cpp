// bplus_test.cpp: the search tree against std::set, and its use of memory.
#include "utility/bplus.h"

#include <gtest/gtest.h>

#include <random>

#include "common/ut/psmem.h"
#include "common/ut/sanitized.h"
#include "utility/syncdb_names.h"

namespace {

using std::string;

short insert(dsBPlusTree& tree, const string& name, dsBPlusTree::CopyFn copy = utInsertFilename,
             dsBPlusTree::CompareFn compare = utFindFilename) {
  return tree.IsertItem(const_cast<char*>(name.data()), static_cast<int>(name.size()) + 1, copy,
                        compare);
}

const char* find(dsBPlusTree& tree, const string& name,
                 dsBPlusTree::CompareFn compare = utFindFilename) {
  return static_cast<const char*>(tree.SearchItem(const_cast<char*>(name.data()), compare));
}

// Names of very different lengths: a buffer that is reused would overflow if its size were mixed up
// with another.
string randomName(std::mt19937& random) {
  string name(random() % (random() % 8 == 0 ? 300 : 6) + 1, 'a');
  for (char& c : name) c = static_cast<char>('a' + random() % 5);
  return name;
}

TEST(BPlusTree, AgreesWithASetAndReleasesAllButAStagingBufferForEachInsertion) {
  std::mt19937 random(4711);
  for (int round = 0; round < 20; ++round) {
    const ut::MemoryUse before = ut::trackedMemory();
    std::size_t staged = 0;
    {
      dsBPlusTree tree(utFreeTree);
      std::set<string> oracle;
      for (int i = 0; i < 600; ++i) {
        const string name = randomName(random), other = randomName(random);
        const short expected = oracle.insert(name).second ? kTreeStored : DUP_VAL;
        ASSERT_EQ(expected, insert(tree, name)) << "seed 4711, " << name;
        ASSERT_EQ(oracle.contains(other), find(tree, other) != nullptr) << other;
        staged += name.size() + 1;
      }
      for (const string& name : oracle) ASSERT_STREQ(name.c_str(), find(tree, name));
    }
    EXPECT_EQ(600u, ut::trackedMemory().blocks - before.blocks);
    // How a block's size is rounded up is the allocator's affair.
    const std::size_t bytes = ut::trackedMemory().bytes - before.bytes;
    EXPECT_TRUE(staged <= bytes && bytes <= staged + 600 * 24) << bytes << ", staged " << staged;
  }
}

// A change to the layout of the tree must not change how often its callbacks are called, nor how
// often it asks for a block.
TEST(BPlusTree, ComparesCopiesAndAllocatesExactlyAsOftenAsEver) {
  static long compared, copied;
  const auto compare = [](void* searched, void* stored) {
    return ++compared, utFindFilename(searched, stored);
  };
  const auto copy = [](void* from, void* to) { return ++copied, utInsertFilename(from, to); };
  // The order of the names, comparisons, copies, blocks, and the comparisons of a search for each.
  for (const auto& [first, step, insertions, copies, blocks, searches] :
       {std::tuple(0, 1, 342092, 34952, 39944u, 189992),
        {9999, 9999, 60903, 69919, 69927, 191228},
        {0, 7919, 181769, 51409, 52187, 198921}}) {
    const auto name = [start = first, by = step](int i) {
      return "piece_" + std::to_string(10000 + (start + i * by) % 10000);
    };
    dsBPlusTree tree;
    compared = copied = 0;
    const std::size_t taken = ut::trackedMemory().taken;
    for (int i = 0; i < 10000; ++i) ASSERT_EQ(kTreeStored, insert(tree, name(i), copy, compare));
    EXPECT_EQ(std::tuple(insertions, copies, blocks),
              std::tuple(compared, copied, ut::trackedMemory().taken - taken));
    compared = 0;
    for (int i = 0; i < 10000; ++i) ASSERT_NE(nullptr, find(tree, name(i), compare));
    EXPECT_EQ(searches, compared) << step;
  }
}

#if defined(VEXO_ADDRESS_SANITIZER)

// Without this, a node that is used after it was freed would go unnoticed.
TEST(BPlusTree, LetsTheSanitizerSeeWhatIsFreeAndWhatIsBeyondABlock) {
  for (const std::size_t size : {8, 13, 64, 1008, 1009, 5000}) {
    auto* first = static_cast<char*>(BTreeMalloc("", 0, size));
    auto* second = static_cast<char*>(BTreeMalloc("", 0, size));
    for (const bool again : {false, true}) {
      EXPECT_EQ(nullptr, __asan_region_is_poisoned(first, size)) << size;
      EXPECT_TRUE(__asan_address_is_poisoned(first + size)) << size;
      EXPECT_TRUE(__asan_address_is_poisoned(second + size)) << size;
      void* freed = second;
      BTreeFree("", 0, &freed);
      EXPECT_TRUE(__asan_address_is_poisoned(second)) << size;
      if (!again) second = static_cast<char*>(BTreeMalloc("", 0, size));
    }
  }
}

#endif

}  // namespace
