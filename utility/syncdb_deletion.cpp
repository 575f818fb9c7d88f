// syncdb_deletion.cpp: picked records become deletions, in transactions, see syncdb_deletion.h.
//
// This is the one place that deletes. A record leaves the list as soon as its delete call has
// succeeded, before its transaction commits. After an abort the list therefore lacks records that
// are still on the server, which is harmless; the reverse would not be. The first failure ends the
// work.
#include "utility/syncdb_deletion.h"

#include <cstdint>
#include <new>
#include <optional>
#include <string>

#include "agent/errormsg.h"
#include "api/vltapi.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/nfdate.h"
#include "common/ut/progress.h"
#include "common/ut/result.h"
#include "utility/deletionlog.h"
#include "utility/dialogue.h"
#include "utility/doubts.h"
#include "utility/report.h"

namespace {

using utility::Report;

constexpr char kFunction[] = "utDeleteFiles()";

std::string dateText(const nfDate& date) {
  return std::string(ut::formatDate(date).text) + " " + ut::formatTime(date).text;
}

class Deletion {
 public:
  Deletion(ObjectList* list, orcObj_t* orc, utility::RunRecord* run)
      : list_(list), orc_(orc), run_(run) {}

  unsigned short run() {
    nlprintf(msg::kBlankLine);
    const utility::PickSummary picks = utility::summarizePicks(*list_);
    log_.emplace(run_->report);
    const bool recorded = log_->canWrite();
    const bool readable = describe(picks, recorded);
    if (PromptYN() != 1 || !readable) {
      TRACE(TR_ORCLEVEL1, " %s: Exit - didn't enter 'y' \n\n", kFunction);
      return 0;
    }
    const unsigned short rc = deletePicks(picks.total.count);
    if (recorded && log_->failed()) {
      agent::showAndLog(nlsprintf(msg::kRecordIncomplete, log_->path()));
    }
    return rc;
  }

  // Memory ran out during the deletion: what is not committed is taken back.
  unsigned short abandon() {
    TRACE(TR_ORCLEVEL0, " %s: Exit - no memory\n\n", kFunction);
    if (inProgress_) ut::ignoreResult(end(VLT_VOTE_ABORT), "without a commit nothing is deleted");
    nlprintf(msg::kNoMemory);
    return msg::kNoMemory.code();
  }

 private:
  unsigned short deletePicks(std::uint64_t count) {
    if (const std::int16_t rc = begin(Report::kLogAndTerminal); rc != 0) return code(rc);
    ut::Progress progress([count](const char* done, const char* rate) {
      return nlsprintf(msg::kProgressDeleting, done, ut::formatNumber(count).text, rate);
    });
    utZylObj_s* object = list_->getFirst();
    while (object != nullptr) {
      if (object->selected != 1) {
        object = list_->getNext(object);
        continue;
      }
      if (transactionIsFull()) {
        const EndResult ended = breakTransaction();
        if (ended.failed) return code(ended.rc);
      }
      if (const std::int16_t rc = deleteObject(*object); rc != 0) return abortAfter(rc);
      TRACE(TR_ORCLEVEL2, " %s: Deleted file '%s' from Zyl Server\n", kFunction, object->name);
      log_->add(*object);
      transaction_.add(*object);
      object = list_->remove(object);
      progress.advance();
    }
    return commitLast();
  }

  // Says what is about to happen, right before the question. `recorded`: the log can be written.
  // False if the message catalog does not let the user read it.
  bool describe(const utility::PickSummary& picks, bool recorded) const {
    const std::string none = nls::plainText(msg::kNone);
    bool readable = false;
    const auto show = [&readable](const auto&... inserts) {
      nlprintf(msg::kAboutToDelete, inserts...);
      readable = nlIsWhole(msg::kAboutToDelete, inserts...);
    };
    show(ut::formatNumber(picks.total.count).text, ut::formatSize(picks.total.bytes).text,
         picks.total.count == 0 ? none : dateText(picks.oldest),
         picks.total.count == 0 ? none : dateText(picks.newest), knownText());
    readable = readable && knownIsReadable() && nlIsWhole(msg::kAskContinue);
    if (!readable) agent::showAndLog(nlsprintf(msg::kQuestionNotReadable));
    if (picks.total.count == 0) nlprintf(msg::kNothingPicked);
    for (const std::string& doubt : run_->doubts) nlprintf(msg::kLine, doubt);
    const std::string ofPicks = utility::doubtPicks(*list_, *run_);
    if (!ofPicks.empty()) {
      agent::showAndLog(ofPicks);
      if (run_->report != nullptr) run_->report->doubt(ofPicks);
    }
    if (!recorded) agent::showAndLog(nlsprintf(msg::kRecordNotWritten, log_->path()));
    const bool remarks = !readable || picks.total.count == 0 || !run_->doubts.empty() ||
                         !ofPicks.empty() || !recorded;
    if (remarks) nlprintf(msg::kBlankLine);
    return readable;
  }

  // What was compared with Oracle before this list was made.
  std::string knownText() const {
    if (run_->list == utility::ListKind::kAll) return nls::plainText(msg::kOracleNotAsked);
    return nlsprintf(msg::kOracleKnows, ut::formatNumber(run_->objectsKnown).text,
                     ut::formatNumber(run_->objects).text);
  }

  bool knownIsReadable() const {
    return run_->list == utility::ListKind::kAll ? nlIsWhole(msg::kOracleNotAsked)
                                                 : nlIsWhole(msg::kOracleKnows, "", "");
  }

  struct EndResult {
    std::int16_t rc;
    bool failed;  // even with code 0, if there was a reason
  };

  static unsigned short code(std::int16_t rc) { return static_cast<unsigned short>(rc); }

  // A transaction takes one object less than the server allows. Kept on purpose, pinned by
  // Deletion.FillsTransactionsToOneLessThanTheLimit. Unsigned, so that a limit of 0 is never
  // reached; "at least", so that with a limit of 1 every object gets a transaction of its own.
  bool transactionIsFull() const {
    return transaction_.count >= static_cast<std::uint32_t>(orc_->maxObjPerTxn) - 1;
  }

  std::int16_t begin(Report where) {
    TRACE(TR_ORCLEVEL2, " %s: Calling VLTBEGINTXN(). vltHandle = %d\n", kFunction, orc_->vltHandle);
    const std::int16_t rc = gVltApiObjP->dvltBeginTxn(VltApiStatusObjP, orc_->vltHandle);
    inProgress_ = rc == 0;
    if (inProgress_) {
      log_->begin(++run_->transactions);
      transaction_ = {};
      return 0;
    }
    const std::string text = utility::reportCode(orc_, "vltBeginTxn", rc, where);
    TRACE(TR_ORCLEVEL0, " %s: '%s'\n", kFunction, text.c_str());
    TRACE(TR_ORCLEVEL0, " %s: Exit - VLTBEGINTXN(). failed rc = %d\n\n", kFunction, rc);
    return rc;
  }

  EndResult end(std::uint8_t vote) {
    TRACE(TR_ORCLEVEL2, " %s: Calling VLTENDTXN(). vltHandle = %d\n", kFunction, orc_->vltHandle);
    std::uint16_t reason = 0;
    log_->flush();  // before the server is asked: what is gone must have its line
    inProgress_ = false;
    std::int16_t rc = gVltApiObjP->dvltEndTxn(VltApiStatusObjP, orc_->vltHandle, vote, &reason);
    recordEnd(vote, rc, reason);
    if (rc == VLT_RC_CHECK_REASON) {
      // Without a reason the code itself is kept: an aborted deletion is no success.
      if (reason != 0) rc = static_cast<std::int16_t>(reason);
      TRACE(TR_ORCLEVEL2, " %s: Reason = %d\n", kFunction, reason);
    }
    return {rc, rc != 0 || reason != 0};
  }

  // How the transaction ended, by the server's answer. Without an answer that is one of the agreed
  // ones a commit may have happened or not.
  void recordEnd(std::uint8_t vote, std::int16_t rc, std::uint16_t reason) {
    using utility::Outcome;
    Outcome outcome = Outcome::kUnknown;
    if (vote == VLT_VOTE_ABORT || rc == VLT_RC_CHECK_REASON) outcome = Outcome::kTakenBack;
    if (vote == VLT_VOTE_COMMIT && rc == 0 && reason == 0) outcome = Outcome::kCommitted;
    log_->end(outcome, rc, reason);
    if (outcome != Outcome::kCommitted) return;
    run_->deleted.count += transaction_.count;
    run_->deleted.bytes += transaction_.bytes;
    if (run_->report != nullptr) run_->report->deleted(run_->deleted);
  }

  // Commits what is there and begins the next transaction.
  EndResult breakTransaction() {
    const EndResult ended = end(VLT_VOTE_COMMIT);
    if (ended.failed) {
      ut::ignoreResult(utility::reportCode(orc_, "vltEndTxn", ended.rc, Report::kLogOnly),
                       "logged");
      TRACE(TR_ORCLEVEL0, " %s: Exit VLTENDTXN() failed rc = %d\n\n", kFunction, ended.rc);
      return ended;
    }
    const std::int16_t rc = begin(Report::kLogOnly);
    return {rc, rc != 0};
  }

  std::int16_t deleteObject(const utZylObj_s& object) {
    const VltDelInfo info = {1, object.objId};
    TRACE(TR_ORCLEVEL2, " %s: Calling VLTDELETEOBJ(). vltHandle = %d\n", kFunction,
          orc_->vltHandle);
    return gVltApiObjP->dvltDeleteObj(VltApiStatusObjP, orc_->vltHandle, VLT_DELETE_BACKUP_ID,
                                      &info);
  }

  // A delete failed: the transaction is taken back.
  unsigned short abortAfter(std::int16_t deleteRc) {
    const std::string text =
        utility::reportCode(orc_, "vltDeleteObj", deleteRc, Report::kLogAndTerminal);
    TRACE(TR_ORCLEVEL0, " %s: '%s'\n", kFunction, text.c_str());
    TRACE(TR_ORCLEVEL0, " %s: VLTDELETEOBJ() failed rc = %d\n", kFunction, deleteRc);
    const EndResult ended = end(VLT_VOTE_ABORT);
    if (!ended.failed) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - VLTDELETEOBJ() failed. rc = %d\n\n", kFunction, deleteRc);
      return code(deleteRc);
    }
    // With a reason but no code, code 0 is reported and returned. Kept on purpose, pinned by
    // Fault.OfEachCallInADeletion.
    ut::ignoreResult(utility::reportCode(orc_, "vltEndTxn", ended.rc, Report::kLogAndTerminal),
                     "shown");
    TRACE(TR_ORCLEVEL0, " %s: VLTENDTXN failed rc = %d\n\n", kFunction, ended.rc);
    return code(ended.rc);
  }

  unsigned short commitLast() {
    const EndResult ended = end(VLT_VOTE_COMMIT);
    if (!ended.failed) {
      TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
      return 0;
    }
    ut::ignoreResult(utility::reportCode(orc_, "vltEndTxn", ended.rc, Report::kLogAndTerminal),
                     "shown");
    TRACE(TR_ORCLEVEL0, " %s: Exit VLTENDTXN() failed rc = %d\n", kFunction, ended.rc);
    return code(ended.rc);
  }

  ObjectList* list_;
  orcObj_t* orc_;
  utility::RunRecord* run_;
  std::optional<utility::DeletionLog> log_;
  utility::ObjectTotal transaction_;  // what the open transaction has deleted so far
  bool inProgress_ = false;           // a transaction is open
};

}  // namespace

unsigned short utDeleteFiles(CLinkedList<utZylObj_s>* list, orcObj_t* orc,
                             utility::RunRecord* run) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  utility::RunRecord unknown(utility::ListKind::kAll);
  Deletion deletion(list, orc, run != nullptr ? run : &unknown);
  try {
    return deletion.run();
  } catch (const std::bad_alloc&) {
    return deletion.abandon();
  }
}
