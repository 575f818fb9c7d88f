// spool.cpp: the spool file of a catalog query. A handle that gets lost here makes a good backup
// look forgotten: the first word of every line must be in the tree.
#include <memory>
#include <set>
#include <sstream>

#include "fuzz/fuzz.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_spool.h"

namespace {

using fuzz::hold;

constexpr char kSeparators[] = " ,\t";

std::set<void*> blocks;

}  // namespace

// Replace the allocator of common/ut. The tree never frees the buffer that it takes for each
// insertion; here all blocks are freed after each input. Only blocks that are known are freed.
void* psMalloc(const char*, int, std::size_t size) { return *blocks.insert(::malloc(size)).first; }
void psFree(const char*, int, void* block) { ::free(blocks.extract(block).value()); }

namespace {

bool holds(dsBPlusTree& tree, std::string word) {
  return tree.SearchItem(word.data(), utFindFilename) != nullptr;
}

// Lines that are too long or hold a zero byte void the listing or are split; they have tests.
bool isOrdinary(const std::string& line) {
  return line.size() < 512 && line.find('\0') == line.npos;
}

// The first word of a line; empty if it has none.
std::string firstWord(const std::string& line) {
  const std::size_t start = line.find_first_not_of(kSeparators);
  if (start == line.npos) return "";
  return line.substr(start, line.find_first_of(kSeparators, start) - start);
}

void checkHandles(dsBPlusTree& tree, const std::string& input, bool loaded) {
  std::istringstream lines(input);
  std::string last;
  for (std::string line; loaded && std::getline(lines, line);) {
    const std::string word = firstWord(line);
    if (word.empty() || !isOrdinary(line)) continue;
    hold(holds(tree, word) || word == "Session", "every handle is in the tree");
    last = word;
  }
  std::string joined = input;  // a handle may continue on the next line
  std::erase(joined, '\n');
  last += '~';
  hold(!holds(tree, last) || joined.find(last) != joined.npos, "handles are compared whole");
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  auto tree = std::make_unique<dsBPlusTree>(utFreeTree);
  dsBPlusTree* given = tree.get();
  const bool loaded = utLoadBTree(plainFile(input), &given) == 0;
  checkHandles(*tree, input, loaded);
  tree.reset();
  while (!blocks.empty()) psFree("", 0, *blocks.begin());
}
