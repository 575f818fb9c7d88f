// spool.cpp: the spool file of a catalog query. A handle that gets lost here makes a good backup
// look forgotten: the first word of every line must be in the tree, unless the line is a message.
#include <memory>
#include <set>
#include <sstream>

#include "fuzz/fuzz.h"
#include "utility/syncdb_names.h"
#include "utility/syncdb_spool.h"

namespace {

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

void fuzz::check(const std::string& input, char*) {
  auto tree = std::make_unique<dsBPlusTree>(utFreeTree);
  dsBPlusTree* given = tree.get();
  const bool loaded = utLoadBTree(plainFile(input), &given) == 0;
  std::istringstream lines(input);
  for (std::string line; loaded && std::getline(lines, line);) {
    // Lines that are too long or hold a zero byte void the answer or are split; they have tests.
    if (line.size() >= 512 || line.find('\0') != line.npos) continue;
    if (line.ends_with('\r')) line.pop_back();
    line.erase(0, line.find_first_not_of(" ,\t"));
    std::string word = line.substr(0, line.find_first_of(" ,\t"));
    // What sqlplus says besides the rows: the count, a confirmation, a warning.
    const bool isMessage = line.find("row") != line.npos || word == "Session" ||
                           word.starts_with("ERROR") || word.starts_with("ORA-280");
    hold(word.empty() || isMessage || tree->SearchItem(word.data(), utFindFilename) != nullptr,
         "every handle is in the tree");
  }
  tree.reset();
  while (!blocks.empty()) {
    void* block = *blocks.begin();
    BTreeFree("", 0, &block);
  }
}
