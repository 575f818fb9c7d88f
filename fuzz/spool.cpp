// spool.cpp: the spool file of a catalog query. A handle that gets lost here makes a good backup
// look forgotten: the first word of every line must be in the tree, unless the line is a message.
#include <algorithm>
#include <memory>
#include <set>
#include <sstream>

#include "fuzz/fuzz.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_spool.h"

namespace {

using fuzz::hold;

std::set<void*> blocks;

}  // namespace

// Replace the allocator of the tree, which never frees the buffer that it takes for each insertion;
// here all blocks are freed after each input. Only blocks that are known are freed.
void* BTreeMalloc(const char*, int, std::size_t size) {
  return *blocks.insert(::malloc(size)).first;
}
void BTreeFree(const char*, int, void** block) {
  if (*block != nullptr) ::free(blocks.extract(*block).value());
  *block = nullptr;
}

namespace {

bool holds(dsBPlusTree& tree, std::string word) {
  return tree.SearchItem(word.data(), utFindFilename) != nullptr;
}

// The words of a line.
std::vector<std::string> wordsOf(std::string line) {
  std::vector<std::string> words;
  if (line.ends_with('\r')) line.pop_back();
  for (std::size_t at = 0, end; (at = line.find_first_not_of(" ,\t", at)) != line.npos; at = end) {
    end = std::min(line.find_first_of(" ,\t", at), line.size());
    words.push_back(line.substr(at, end - at));
  }
  return words;
}

// What sqlplus says besides the rows: the count, a confirmation, a warning.
bool isMessage(const std::vector<std::string>& words) {
  const bool count = words.size() >= 3 && words[1].starts_with("row");
  return count || words[0] == "Session" || words[0].starts_with("ERROR") ||
         words[0].starts_with("ORA-280");
}

void checkHandles(dsBPlusTree& tree, const std::string& input, bool loaded) {
  std::istringstream lines(input);
  for (std::string line; loaded && std::getline(lines, line);) {
    const std::vector<std::string> words = wordsOf(line);
    // Lines that are too long or hold a zero byte void the answer or are split; they have tests.
    const bool isOrdinary = line.size() < 512 && line.find('\0') == line.npos;
    if (words.empty() || !isOrdinary || isMessage(words)) continue;
    hold(holds(tree, words.front()), "every handle is in the tree");
  }
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  auto tree = std::make_unique<dsBPlusTree>(utFreeTree);
  dsBPlusTree* given = tree.get();
  const bool loaded = utLoadBTree(plainFile(input), &given) == 0;
  checkHandles(*tree, input, loaded);
  tree.reset();
  while (!blocks.empty()) {
    void* block = *blocks.begin();
    BTreeFree("", 0, &block);
  }
}
