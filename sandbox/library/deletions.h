// deletions.h: an open transaction that deletes backup objects.
//
// The deletions are collected and carried out together by the commit, in one transaction of the
// store. Until then the store is not locked and holds every object: an abort, a lost session or a
// killed process has nothing to bring back. Should another process delete one of the objects first,
// the commit becomes an abort.
#ifndef SANDBOX_LIBRARY_DELETIONS_H
#define SANDBOX_LIBRARY_DELETIONS_H

#include <cstdint>
#include <set>

#include "sandbox/store/store.h"

namespace sandbox {

class Deletions {
 public:
  // The store's limit and the node's permission are those of this moment.
  Deletions(Store& store, const Node& node);

  // VLT_RC_OK: will be deleted. VLT_RC_NO_MATCH: the node has no such object, or it was named
  // before. VLT_RC_TXN_LIMIT, VLT_RC_NOT_AUTHORIZED: not taken. What was taken before is kept.
  std::int16_t add(std::int64_t object);

  // Deletes what was taken. Returns 0, or the code of what kept it from doing so; then nothing is
  // deleted.
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
