// query.cpp: an open query over the backup objects of one node.
#include "sandbox/library/query.h"

namespace sandbox {
namespace {

// A scan of all rows: store.h says why there is no index. Names begin with "/", so the pattern that
// takes them all need not be compared with each of a million.
std::string selectText() {
  return "SELECT " + std::string(kObjectColumns) +
         " FROM object WHERE node=?1 AND state=?2 AND fs=?3 AND (?4='' OR owner=?4) AND "
         "(?5=0 OR inserted<=?5) AND (?6='/*' AND hl<>'' OR hl GLOB ?6) AND "
         "(?7='/*' OR ll GLOB ?7) ORDER BY id";
}

// SQLite's patterns have the interface's "*" and "?". They also have brackets, which are plain
// characters here.
std::string globOf(std::string_view pattern) {
  std::string glob;
  for (char c : pattern) glob.append(c == '[' ? "[[]" : std::string(1, c));
  return glob;
}

// Names in a query are patterns, so "*" may be where an object's name has its "/".
void requirePattern(std::string_view text, bool mayBeEmpty) {
  require(text.empty() ? mayBeEmpty : text.front() == '/' || text.front() == '*');
}

}  // namespace

ObjectQuery::ObjectQuery(const std::string& storePath, const Node& node,
                         const VltQueryBackup& query)
    : store_(storePath), select_(store_.database().prepare(selectText())) {
  requireRecord(&query, 2);
  require(query.objName != nullptr);
  const VltObjName& name = *query.objName;
  require(name.objType == VLT_OBJTYPE_FILE);
  require(checkedText(name.fileSpace).starts_with('/'));
  requirePattern(checkedText(name.highLevel), true);
  requirePattern(checkedText(name.lowLevel), false);
  require(query.objState == VLT_STATE_ACTIVE || query.objState == VLT_STATE_INACTIVE);
  select_.bindAll(node.id, query.objState, checkedText(name.fileSpace),
                  checkedText(query.owner, VLT_MAX_OWNER), checkedDate(query.pitDate),
                  globOf(checkedText(name.highLevel)), globOf(checkedText(name.lowLevel)));
  // SQLite takes the snapshot at the first row, so that row is fetched now.
  rowWaits_ = select_.step();
}

std::int16_t ObjectQuery::next() {
  if (!rowWaits_) return found_ ? VLT_RC_FINISHED : VLT_RC_NO_MATCH;
  found_ = true;
  readObject(select_, object_);
  rowWaits_ = select_.step();
  return object_.unknownFormat ? VLT_RC_UNKNOWN_FORMAT : VLT_RC_MORE_DATA;
}

}  // namespace sandbox
