// deletions.cpp: transactions that delete backup objects, and their entry points.
#include "sandbox/library/deletions.h"

#include "sandbox/library/state.h"

namespace sandbox {
namespace {

std::int16_t endTransaction(Session& session, std::uint8_t vote, std::uint16_t* reason) {
  require(reason != nullptr);
  require(vote == VLT_VOTE_COMMIT || vote == VLT_VOTE_ABORT);
  require(session.transaction != nullptr, VLT_RC_BAD_SEQUENCE);
  *reason = vote == VLT_VOTE_COMMIT ? session.transaction->commit() : std::uint16_t{0};
  session.transaction.reset();
  return *reason == 0 ? VLT_RC_OK : VLT_RC_CHECK_REASON;
}

}  // namespace

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
  if (limit_ > 0 && static_cast<std::int64_t>(objects_.size()) >= limit_) return VLT_RC_TXN_LIMIT;
  if (objects_.contains(object) || !exists(object)) return VLT_RC_NO_MATCH;
  objects_.insert(object);
  return VLT_RC_OK;
}

bool Deletions::exists(std::int64_t object) {
  const bool found = find_.bind(1, object).bind(2, node_).step();
  find_.reset();
  return found;
}

std::uint16_t Deletions::commit() {
  if (objects_.empty()) return 0;
  try {
    WriteTransaction deletion(store_.database());
    Statement erase = store_.database().prepare("DELETE FROM object WHERE id=? AND node=?");
    for (std::int64_t object : objects_) {
      erase.bind(1, object).bind(2, node_).run();
      if (store_.database().changes() == 0) return VLT_RC_NO_MATCH;
    }
    deletion.commit();
  } catch (const StoreError&) {
    return VLT_RC_STORE_FAILED;
  }
  return 0;
}

}  // namespace sandbox

using namespace sandbox;

std::int16_t vltBeginTxn(std::uint32_t handle) {
  return enterSession(
      __func__, handle, Access::kLoggedOn, Pace::kEachCall, [&] { return handleText(handle); },
      [](Session& session) -> std::int16_t {
        require(session.transaction == nullptr, VLT_RC_BAD_SEQUENCE);
        session.transaction = std::make_unique<Deletions>(session.store, session.node);
        return VLT_RC_OK;
      });
}

std::int16_t vltDeleteObj(std::uint32_t handle, std::uint8_t deleteType, const VltDelInfo* info) {
  const auto describe = [&] {
    std::string text = handleText(handle) + " type=" + std::to_string(deleteType);
    if (info != nullptr) text += " id=" + std::to_string(fromWord(info->objId));
    return text;
  };
  return enterSession(__func__, handle, Access::kLoggedOn, Pace::kPerObject, describe,
                      [&](Session& session) -> std::int16_t {
                        require(session.transaction != nullptr, VLT_RC_BAD_SEQUENCE);
                        require(deleteType == VLT_DELETE_BACKUP_ID);
                        requireRecord(info, 1);
                        return session.transaction->add(fromWord(info->objId));
                      });
}

std::int16_t vltEndTxn(std::uint32_t handle, std::uint8_t vote, std::uint16_t* reason) {
  return enterSession(
      __func__, handle, Access::kLoggedOn, Pace::kEachCall,
      [&] {
        return handleText(handle) + " vote=" + std::to_string(vote) +
               " reason=" + (reason != nullptr ? std::to_string(*reason) : "-");
      },
      [&](Session& session) -> std::int16_t { return endTransaction(session, vote, reason); },
      [&](const Fault& fault) {
        // The ordered failure is the server's: whatever the vote was, it aborts.
        if (Session* session = library().find(handle)) session->transaction.reset();
        if (reason != nullptr) *reason = fault.reason;
      });
}
