// deletions.cpp: an open transaction that deletes backup objects.
#include "sandbox/library/deletions.h"

#include <utility>

#include "sandbox/library/checks.h"

namespace sandbox {

Deletions::Deletions(Store& store, const Node& node)
    : store_(store),
      node_(node.id),
      limit_(store.setting("maxObjPerTxn")),
      find_(store.database().prepare("SELECT 1 FROM object WHERE id=? AND node=?")) {
  const std::optional<Node> current = store.findNode(node.name);
  mayDelete_ = current && current->mayDelete;
}

std::int16_t Deletions::add(std::int64_t object) {
  if (!mayDelete_) return VLT_RC_NOT_AUTHORIZED;
  if (limit_ > 0 && std::cmp_greater_equal(objects_.size(), limit_)) return VLT_RC_TXN_LIMIT;
  if (objects_.contains(object) || !exists(object)) return VLT_RC_NO_MATCH;
  objects_.insert(object);
  return VLT_RC_OK;
}

bool Deletions::exists(std::int64_t object) {
  const bool found = find_.bindAll(object, node_).step();
  find_.reset();
  return found;
}

std::uint16_t Deletions::commit() {
  if (objects_.empty()) return 0;
  try {
    WriteTransaction deletion(store_.database());
    Statement erase = store_.database().prepare("DELETE FROM object WHERE id=? AND node=?");
    for (std::int64_t object : objects_) {
      erase.bindAll(object, node_).run();
      if (store_.database().changes() == 0) return VLT_RC_NO_MATCH;
    }
    deletion.commit();
  } catch (const StoreError&) {
    return VLT_RC_STORE_FAILED;
  }
  return 0;
}

}  // namespace sandbox
