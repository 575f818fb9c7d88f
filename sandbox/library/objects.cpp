// objects.cpp: entry points of queries for backup objects, and of transactions that delete them.
#include "sandbox/library/frame.h"

namespace sandbox {
namespace {

std::string queryText(std::uint8_t queryType, const VltQueryBackup* query) {
  std::string text = " type=" + std::to_string(queryType);
  if (query == nullptr || query->structVersion != 2 || query->objName == nullptr) return text;
  const VltObjName& name = *query->objName;
  text.append(" fs=").append(checkedText(name.fileSpace));
  text.append(" hl=").append(checkedText(name.highLevel));
  text.append(" ll=").append(checkedText(name.lowLevel));
  text.append(" owner=").append(checkedText(query->owner, VLT_MAX_OWNER));
  text.append(" state=").append(std::to_string(query->objState));
  const Stamp bound = checkedDate(query->pitDate);
  if (bound != 0) text.append(" pit=").append(stampText(bound));
  return text;
}

VltQryRespBackup& responseOf(VltDataBlk* block) {
  requireRecord(block, 3);
  require(block->buffer != nullptr);
  require(block->bufferLen >= sizeof(VltQryRespBackup), VLT_RC_BUFFER_TOO_SMALL);
  auto* response = static_cast<VltQryRespBackup*>(block->buffer);
  requireRecord(response, 8);
  return *response;
}

// Fills the caller's record, whose version is not touched.
void fillResponse(const Object& object, VltQryRespBackup& response) {
  response.objState = static_cast<std::uint8_t>(object.state);
  fillText(response.objName.fileSpace, object.fileSpace);
  fillText(response.objName.highLevel, object.highLevel);
  fillText(response.objName.lowLevel, object.lowLevel);
  response.objName.objType = VLT_OBJTYPE_FILE;
  fillText(response.owner, object.owner);
  response.objId = toWord(object.id);
  response.insDate = toDate(object.inserted);
  response.sizeEstimate = toWord(object.size);
  response.compressType = object.compressed ? VLT_COMPRESSED : 0;
  response.encryptionType = static_cast<std::uint8_t>(object.encryption);
  response.clientDeduplicated = object.deduplicated ? 1 : 0;
}

int nextObject(Session& session, VltDataBlk* block) {
  require(session.query != nullptr, VLT_RC_BAD_SEQUENCE);
  VltQryRespBackup& response = responseOf(block);
  const std::int16_t code = session.query->next();
  block->numBytes = code == VLT_RC_MORE_DATA ? sizeof response : 0;
  if (code == VLT_RC_MORE_DATA) fillResponse(session.query->object(), response);
  return code;
}

int endTransaction(Session& session, std::uint8_t vote, std::uint16_t* reason) {
  require(reason != nullptr);
  require(vote == VLT_VOTE_COMMIT || vote == VLT_VOTE_ABORT);
  require(session.transaction != nullptr, VLT_RC_BAD_SEQUENCE);
  *reason = vote == VLT_VOTE_COMMIT ? session.transaction->commit() : std::uint16_t{0};
  session.transaction.reset();
  return *reason == 0 ? VLT_RC_OK : VLT_RC_CHECK_REASON;
}

}  // namespace
}  // namespace sandbox

using namespace sandbox;

std::int16_t vltBeginQuery(std::uint32_t handle, std::uint8_t queryType,
                           const VltQueryBackup* query) {
  return enterSession(
      __func__, handle, Access::kLoggedOn,
      [&](Session& session) {
        require(session.query == nullptr, VLT_RC_BAD_SEQUENCE);
        require(queryType == VLT_QUERY_BACKUP);
        require(query != nullptr);
        session.query =
            std::make_unique<ObjectQuery>(session.options.storePath, session.node, *query);
        return VLT_RC_OK;
      },
      [&] { return queryText(queryType, query); });
}

std::int16_t vltGetNextQObj(std::uint32_t handle, VltDataBlk* block) {
  return enterSession(__func__, handle, Access::kPerObject,
                      [&](Session& session) { return nextObject(session, block); });
}

std::int16_t vltEndQuery(std::uint32_t handle) {
  return enterSession(__func__, handle, Access::kLoggedOn, [](Session& session) {
    require(session.query != nullptr, VLT_RC_BAD_SEQUENCE);
    session.query.reset();
    return VLT_RC_OK;
  });
}

std::int16_t vltBeginTxn(std::uint32_t handle) {
  return enterSession(__func__, handle, Access::kLoggedOn, [](Session& session) {
    require(session.transaction == nullptr, VLT_RC_BAD_SEQUENCE);
    session.transaction = std::make_unique<Deletions>(session.store, session.node);
    return VLT_RC_OK;
  });
}

std::int16_t vltDeleteObj(std::uint32_t handle, std::uint8_t deleteType, const VltDelInfo* info) {
  return enterSession(
      __func__, handle, Access::kPerObject,
      [&](Session& session) {
        require(session.transaction != nullptr, VLT_RC_BAD_SEQUENCE);
        require(deleteType == VLT_DELETE_BACKUP_ID);
        requireRecord(info, 1);
        return session.transaction->add(fromWord(info->objId));
      },
      [&] {
        return " type=" + std::to_string(deleteType) +
               (info != nullptr ? " id=" + std::to_string(fromWord(info->objId)) : "");
      });
}

std::int16_t vltEndTxn(std::uint32_t handle, std::uint8_t vote, std::uint16_t* reason) {
  return enterSession(
      __func__, handle, Access::kLoggedOn,
      [&](Session& session) { return endTransaction(session, vote, reason); },
      [&] {
        return " vote=" + std::to_string(vote) +
               " reason=" + (reason != nullptr ? std::to_string(*reason) : "-");
      },
      [&](const Fault& fault) {
        // An ordered failure is the server's: it aborts, whatever the vote was.
        if (Session* session = library().find(handle)) session->transaction.reset();
        if (reason != nullptr) *reason = fault.reason;
      });
}
