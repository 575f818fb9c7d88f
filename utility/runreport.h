// runreport.h: what a run listed, doubted and deleted, as lines for other programs.
//
// The environment variable VEXO_REPORT names the file; SYNCDB, DELETE and QUERY append to it. Lines
// as in recordline.h, in this order, with the lines of the record of deletions (deletionlog.h)
// between doubts and "finish":
//
//   {"v":1,"event":"start","time":T,"pid":N,"user":S,"run":R,"version":S,"command":C,
//    "node":S,"owner":S,"from":DAY,"to":DAY}
//   {"v":1,"event":"object","run":R,"id":S,"size":N,"date":D,"encryption":E,"name":S}
//   {"v":1,"event":"doubt","time":T,"pid":N,"user":S,"run":R,"id":S,"text":S}
//   {"v":1,"event":"finish","time":T,"pid":N,"user":S,"run":R,"code":N,"status":N,
//    "complete":B,"objects":N,"known":N,"listed":N,"listedBytes":N,"doubts":N,
//    "deleted":N,"deletedBytes":N}
//
//   R  "START-PID", with which the names of the run's transactions begin
//   C  "SYNCDB", "DELETE" or "QUERY"       E  "AES_128BIT", "AES_256BIT", "DES_56BIT" or "none"
//
// A run that ends before it has its dates has no "from" and "to", and one that ends before its
// logon empty texts for node and owner. "known" is for SYNCDB only. A run without "finish" was
// killed, or its report could not be written.
//
// The report never changes what the run does: at the first line that cannot be written it says so
// and ends. Nothing here throws.
#ifndef UTILITY_RUNREPORT_H
#define UTILITY_RUNREPORT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "common/ut/nfdate.h"
#include "utility/syncdb_listing.h"
#include "utility/zylobj.h"

namespace utility {

class RunReport {
 public:
  // `path` may be null or empty: then there is no report, and all calls do nothing. `command` is
  // one of C above and lives longer than the report.
  RunReport(const char* path, const char* command);

  bool isOpen() const { return !path_.empty(); }

  // The node and owner of the session, then the dates: with these the report begins.
  void logon(const char* node, const char* owner);
  void start(const nfDate& from, const nfDate& to);
  // What the list shows.
  void listing(const RangeCounts& counts, const ObjectList& list);
  // A message with its identifier.
  void doubt(std::string_view message);
  // A line of the record of deletions, for an object of the open transaction; and the transaction's
  // last line, with which the others are written if it was committed, else dropped.
  void hold(std::string_view line);
  void endTransaction(bool committed, std::string_view line);
  void deleted(const ObjectTotal& committed);
  // `code` is the run's result, `status` what the shell will see.
  void finish(int code, int status);

 private:
  template <typename Action>
  void guarded(Action&& action);
  void begin(const nfDate* from, const nfDate* to);
  void add(std::string_view lines);
  void flush();
  void giveUp();

  std::string path_;
  const char* command_;
  std::string node_, owner_;
  std::string lines_;  // not yet in the file
  std::string held_;   // of the open transaction
  bool begun_ = false;
  RangeCounts counts_;
  ObjectTotal listed_, deleted_;
  std::uint64_t doubts_ = 0;
};

}  // namespace utility

#endif  // UTILITY_RUNREPORT_H
