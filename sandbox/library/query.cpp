// query.cpp: queries of backup objects, and their entry points.
#include "sandbox/library/query.h"

#include "sandbox/library/state.h"
#include "sandbox/store/text.h"

namespace sandbox {
namespace {

// The parts of a query that SQL decides; the name patterns are left to advance(). The node, the
// filespace and the state are compared row by row: see store.h for why there is no index.
std::string selectText() {
  return "SELECT " + std::string(kObjectColumns) +
         " FROM object WHERE node=?1 AND state=?2 AND fs=?3 AND (?4='' OR owner=?4) AND "
         "(?5=0 OR inserted<=?5) ORDER BY id";
}

// Names in a query are patterns, so "*" may stand where an object's name has its "/".
void requirePattern(std::string_view text, bool mayBeEmpty) {
  require(text.empty() ? mayBeEmpty : text.front() == '/' || text.front() == '*');
}

void requireQuery(const VltQueryBackup& query) {
  requireRecord(&query, 2);
  require(query.objName != nullptr);
  const VltObjName& name = *query.objName;
  require(name.objType == VLT_OBJTYPE_FILE);
  require(checkedText(name.fileSpace).starts_with('/'));
  requirePattern(checkedText(name.highLevel), true);
  requirePattern(checkedText(name.lowLevel), false);
  require(query.objState == VLT_STATE_ACTIVE || query.objState == VLT_STATE_INACTIVE);
}

std::string queryText(std::uint32_t handle, std::uint8_t queryType, const VltQueryBackup* query) {
  std::string text = handleText(handle) + " type=" + std::to_string(queryType);
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

std::int16_t nextObject(Session& session, VltDataBlk* block) {
  require(session.query != nullptr, VLT_RC_BAD_SEQUENCE);
  VltQryRespBackup& response = responseOf(block);
  const std::int16_t code = session.query->next();
  block->numBytes = 0;
  if (code != VLT_RC_MORE_DATA) return code;
  fillResponse(session.query->object(), response);
  block->numBytes = sizeof response;
  return code;
}

}  // namespace

ObjectQuery::ObjectQuery(const std::string& storePath, const Node& node,
                         const VltQueryBackup& query)
    : store_(storePath), select_(store_.database().prepare(selectText())) {
  requireQuery(query);
  highLevel_ = checkedText(query.objName->highLevel);
  lowLevel_ = checkedText(query.objName->lowLevel);
  select_.bind(1, node.id)
      .bind(2, std::int64_t{query.objState})
      .bind(3, checkedText(query.objName->fileSpace))
      .bind(4, checkedText(query.owner, VLT_MAX_OWNER))
      .bind(5, checkedDate(query.pitDate));
  // SQLite takes the snapshot with the first row, so that row is fetched now.
  rowWaits_ = select_.step();
}

bool ObjectQuery::advance() {
  for (; rowWaits_; rowWaits_ = select_.step()) {
    readObject(select_, object_);
    if (!wildcardMatches(highLevel_, object_.highLevel)) continue;
    if (wildcardMatches(lowLevel_, object_.lowLevel)) return true;
  }
  return false;
}

std::int16_t ObjectQuery::next() {
  if (!advance()) return found_ ? VLT_RC_FINISHED : VLT_RC_NO_MATCH;
  found_ = true;
  rowWaits_ = select_.step();
  return object_.unknownFormat ? VLT_RC_UNKNOWN_FORMAT : VLT_RC_MORE_DATA;
}

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

}  // namespace sandbox

using namespace sandbox;

std::int16_t vltBeginQuery(std::uint32_t handle, std::uint8_t queryType,
                           const VltQueryBackup* query) {
  return enterSession(
      __func__, handle, Access::kLoggedOn, Pace::kEachCall,
      [&] { return queryText(handle, queryType, query); },
      [&](Session& session) -> std::int16_t {
        require(session.query == nullptr, VLT_RC_BAD_SEQUENCE);
        require(queryType == VLT_QUERY_BACKUP);
        require(query != nullptr);
        session.query =
            std::make_unique<ObjectQuery>(session.options.storePath, session.node, *query);
        return VLT_RC_OK;
      });
}

std::int16_t vltGetNextQObj(std::uint32_t handle, VltDataBlk* block) {
  return enterSession(
      __func__, handle, Access::kLoggedOn, Pace::kPerObject, [&] { return handleText(handle); },
      [&](Session& session) { return nextObject(session, block); });
}

std::int16_t vltEndQuery(std::uint32_t handle) {
  return enterSession(
      __func__, handle, Access::kLoggedOn, Pace::kEachCall, [&] { return handleText(handle); },
      [](Session& session) -> std::int16_t {
        require(session.query != nullptr, VLT_RC_BAD_SEQUENCE);
        session.query.reset();
        return VLT_RC_OK;
      });
}
