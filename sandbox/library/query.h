// query.h: an open query over the backup objects of one node.
//
// Streams: it holds one row at a time, whatever the number of objects. It reads a snapshot of the
// moment in which it was opened, on a connection of its own, so that deletions of the same session
// neither wait for it nor show in it.
#ifndef SANDBOX_LIBRARY_QUERY_H
#define SANDBOX_LIBRARY_QUERY_H

#include <string>

#include "sandbox/library/checks.h"
#include "sandbox/store/store.h"

namespace sandbox {

class ObjectQuery {
 public:
  // Opens the snapshot. Throws Refusal for a query that is not valid, StoreError for a failing
  // store.
  ObjectQuery(const std::string& storePath, const Node& node, const VltQueryBackup& query);

  // VLT_RC_MORE_DATA: object() is the next one. VLT_RC_UNKNOWN_FORMAT: the next one cannot be
  // shown. VLT_RC_FINISHED, or VLT_RC_NO_MATCH if there was none at all: the end, and the answer to
  // every later call.
  std::int16_t next();

  const Object& object() const { return object_; }

 private:
  Store store_;
  Statement select_;
  Object object_;
  bool rowWaits_ = false;  // select_ is at a row that was not yet returned
  bool found_ = false;
};

}  // namespace sandbox

#endif  // SANDBOX_LIBRARY_QUERY_H
