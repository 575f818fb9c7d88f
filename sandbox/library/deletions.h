// deletions.h: an open transaction that deletes backup objects.
//
// The deletions are collected and carried out together by the commit, in one transaction of the
// store. Until then the store is not locked and holds every object: an abort, a lost session or a
// killed process leaves nothing to undo. If another process deletes one of the objects first, the
// commit becomes an abort.
#ifndef SANDBOX_LIBRARY_DELETIONS_H
#define SANDBOX_LIBRARY_DELETIONS_H

#include <cstdint>
#include <set>

#include "sandbox/store/store.h"

namespace sandbox {

class Deletions {
 public:
  // Reads the store's limit and the node's permission once, here.
  Deletions(Store& store, const Node& node);

  // VLT_RC_OK: will be deleted. VLT_RC_NO_MATCH: the node has no such object, or it was taken
  // before. VLT_RC_TXN_LIMIT, VLT_RC_NOT_AUTHORIZED: not taken. The others are kept in each case.
  std::int16_t add(std::int64_t object);

  // Deletes what was taken. Returns 0, or the code of what prevented it; then nothing is deleted.
  std::uint16_t commit();

 private:
  bool exists(std::int64_t object);

  Store& store_;
  std::int64_t node_;
  std::int64_t limit_;  // 0: none
  bool mayDelete_;
  Statement find_;
  std::set<std::int64_t> objects_;
};

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_DELETIONS_H
