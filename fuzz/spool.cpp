// spool.cpp: the spool file of a catalog query. A handle that gets lost here makes a good backup
// look forgotten: the first word of every line must be in the tree.
#include <set>

#include "fuzz/fuzz.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_spool.h"

// The tree's allocator, in place of the floor's: the tree keeps a buffer for each insertion for
// good, here they go with the input. It frees only what it gave.
static std::set<void*> blocks;
void* psMalloc(const char*, int, std::size_t size) { return *blocks.insert(::malloc(size)).first; }
void psFree(const char*, int, void* block) { ::free(blocks.extract(block).value()); }

void fuzz::check(const std::string& input, char*) {
  auto tree = std::make_unique<dsBPlusTree>(utFreeTree);
  dsBPlusTree* given = tree.get();
  const bool loaded = utLoadBTree(plainFile(input), &given) == 0;
  const auto has = [&](std::string& word) { return tree->SearchItem(word.data(), utFindFilename); };
  std::istringstream lines(input);
  std::string word;
  for (std::string line; loaded && std::getline(lines, line);) {
    const std::size_t start = line.find_first_not_of(" ,\t");
    if (start == line.npos || line.size() >= 512 || line.find('\0') != line.npos) continue;
    word = line.substr(start, line.find_first_of(" ,\t", start) - start);
    hold(has(word) || word == "Session", "every handle is in the tree");
  }
  std::string flat = input;  // a handle may go on in the next line
  std::erase(flat, '\n');
  hold(!has(word += '~') || flat.find(word) != flat.npos, "handles are compared whole");
  tree.reset();
  while (!blocks.empty()) psFree("", 0, *blocks.begin());
}
