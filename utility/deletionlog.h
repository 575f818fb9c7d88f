// deletionlog.h: vexodeleted.log, the record of what was deleted, beside the error log.
//
// Lines as in recordline.h. Each object of a transaction has its line before the transaction is
// committed, and the transaction has a last line that says how it ended:
//
//   {"v":1,"event":"delete","time":T,"pid":N,"user":S,"transaction":S,"node":S,"owner":S,
//    "id":S,"size":N,"date":D,"name":S}
//   {"v":1,"event":"end","time":T,"pid":N,"user":S,"transaction":S,"outcome":O,"code":N,
//    "reason":N,"objects":N}
//
//   T   local time with its offset from UTC      D   when the object was stored, local time
//   O   "committed", "taken back", or "unknown" when the server's answer does not say
//   id  the server's identifier of the object, as a text: it has up to 20 digits
//
// So an object is gone for certain if the "end" line of its transaction says "committed". If that
// line is missing or says "unknown", only the server can tell. Lines are written before the server
// is asked to commit, but not forced to the disk: they survive the program, not the machine.
//
// The report of the run (runreport.h) gets the same lines, those of objects only if the transaction
// was committed.
#ifndef UTILITY_DELETIONLOG_H
#define UTILITY_DELETIONLOG_H

#include <cstdint>
#include <string>

#include "utility/runreport.h"
#include "utility/zylobj.h"

namespace utility {

inline constexpr char kDeletionLogName[] = "vexodeleted.log";

enum class Outcome { kCommitted, kTakenBack, kUnknown };

// The record of one deletion, which may need several transactions. Throws std::bad_alloc. `report`
// may be null.
class DeletionLog {
 public:
  explicit DeletionLog(RunReport* report = nullptr);

  const char* path() const { return path_.c_str(); }
  // Whether a line could be written now. Creates the file.
  bool canWrite() const;

  // The next transaction; `number` counts them from 1 in this run.
  void begin(unsigned number);
  void add(const utZylObj_s& object);
  // To be called right before the server is asked to end the transaction.
  void flush();
  void end(Outcome outcome, std::int16_t code, std::uint16_t reason);

  // Something did not reach the file.
  bool failed() const { return failed_; }

 private:
  RunReport* report_;
  std::string path_, transaction_;
  std::string lines_;          // not yet in the record
  std::uint64_t objects_ = 0;  // in this transaction
  bool failed_ = false;
};

}  // namespace utility

#endif  // UTILITY_DELETIONLOG_H
