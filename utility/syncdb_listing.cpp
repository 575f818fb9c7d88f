// syncdb_listing.cpp: the storage objects of a date range become a list, see syncdb_listing.h.
#include "utility/syncdb_listing.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "api/vltapi.h"
#include "api/vltrecords.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/progress.h"
#include "common/ut/psfile.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"
#include "common/ut/utf8.h"
#include "utility/report.h"
#include "utility/syncdb_names.h"

namespace {

constexpr char kFunction[] = "utGetFileList()";
constexpr std::uint32_t kBufferLength = 4600;
constexpr std::uint16_t kResponseVersion = 8;

// One run of the listing: its records, its diagnostic file, its query.
class Listing {
 public:
  Listing(const nfDate& start, const nfDate& end, orcObj_t* orc, ObjectList* list,
          dsBPlusTree* tree, utility::RangeCounts* counts)
      : start_(start), end_(end), orc_(orc), list_(list), tree_(tree), counts_(counts) {}

  unsigned short run() {
    openDiagnosticFile();
    if (const std::int16_t rc = querySession(); rc != 0) return static_cast<unsigned short>(rc);
    if (const std::int16_t rc = beginQuery(); rc != 0) return static_cast<unsigned short>(rc);
    ut::Progress progress([](const char* count, const char* rate) {
      return nlsprintf(msg::kProgressListing, count, rate);
    });
    for (;;) {
      const std::int16_t rc = nextObject();
      if (rc == VLT_RC_MORE_DATA) {
        if (const unsigned short taken = takeObject(); taken != 0) return taken;
        progress.advance();
      } else if (rc == VLT_RC_UNKNOWN_FORMAT) {
        TRACE(TR_ORCLEVEL2,
              " %s: VLTGETNEXTQOBJ returned VLT_RC_UNKNOWN_FORMAT. Skip this object and continue "
              "querying ZYL server.\n",
              kFunction);
        skipped_ = true;
      } else {
        return finish(rc);
      }
    }
  }

 private:
  // A diagnostic aid under TR_ORCLEVEL2: the names of all objects in the range. Never deleted.
  void openDiagnosticFile() {
    if (!TR_ORCLEVEL2) return;
    const std::string path = ut::tempName("ZYLO");
    if (path.empty()) {
      TRACE(TR_ORCLEVEL0, " %s: tempnam() failed for ZYLO\n", kFunction);
      return;
    }
    names_ = ut::openPrivateFile(path.c_str());
    if (names_ == nullptr) {
      nlprintf(msg::kTempFileNotWritten, path);
      nlprintf(msg::kBlankLine);
      TRACE(TR_ORCLEVEL0, " %s: could not open file '%s' for writing\n", kFunction, path.c_str());
      return;
    }
    TRACE(TR_ORCLEVEL2, " %s: Opened file '%s' for writing\n", kFunction, path.c_str());
  }

  std::int16_t querySession() {
    session_.structVersion = 1;
    const std::int16_t rc =
        gVltApiObjP->dvltQuerySessInfo(VltApiStatusObjP, orc_->vltHandle, &session_);
    if (rc == 0) {
      ut::terminate(session_.nodeName);
      ut::terminate(session_.owner);
      return 0;
    }
    const std::string text =
        utility::reportCode(orc_, "vltQuerySessInfo", rc, utility::Report::kLogOnly);
    TRACE(TR_ORCLEVEL0, " %s: '%s'\n", kFunction, text.c_str());
    TRACE(TR_ORCLEVEL0, " Exit %s: VLTQUERYSESSINFO() failed. vltHandle = %d, rc = %d\n\n",
          kFunction, orc_->vltHandle, rc);
    return rc;
  }

  std::int16_t beginQuery() {
    VltObjName name = {};
    ut::ignoreResult(ut::copyText(name.fileSpace, orc_->VEXO_FS), "an option is shorter");
    ut::ignoreResult(ut::copyText(name.highLevel, "/*"), "fits");
    ut::ignoreResult(ut::copyText(name.lowLevel, "/*"), "fits");
    name.objType = VLT_OBJTYPE_FILE;
    VltQueryBackup query = {};
    query.structVersion = 2;
    query.objName = &name;
    query.owner = orc_->VEXO_OWNER;
    query.objState = VLT_STATE_ACTIVE;
    query.pitDate = {
        static_cast<std::uint16_t>(ut::yearOf(end_)), end_.month, end_.day, 23, 59, 59};
    const std::int16_t rc =
        gVltApiObjP->dvltBeginQuery(VltApiStatusObjP, orc_->vltHandle, VLT_QUERY_BACKUP, &query);
    if (rc != 0) {
      const std::string text =
          utility::reportCode(orc_, "vltBeginQuery", rc, utility::Report::kLogAndTerminal);
      TRACE(TR_ORCLEVEL0, " %s: '%s'\n", kFunction, text.c_str());
      TRACE(TR_ORCLEVEL0, " %s: Exit - VLTBEGINQUERY() failed rc = %d\n\n", kFunction, rc);
      return rc;
    }
    return 0;
  }

  // Asks for the next object and takes it over into found_. Each call gets an empty record: what
  // the library does not fill must not be left from the object before. A record without any name is
  // no object, whatever the library says.
  std::int16_t nextObject() {
    block_ = {3, kBufferLength, 0, buffer_.bytes};
    VltQryRespBackup& response = buffer_.response;
    // Not "= {}", for which the compiler clears a second record and copies it.
    std::memset(&response, 0, sizeof response);
    response.structVersion = kResponseVersion;
    response.objState = VLT_STATE_ACTIVE;
    const std::int16_t rc =
        gVltApiObjP->dvltGetNextQObj(VltApiStatusObjP, orc_->vltHandle, &block_);
    TRACE(TR_ORCLEVEL2, " %s: VLTGETNEXTQOBJ() returned vltRc = %d\n", kFunction, rc);
    if (rc != VLT_RC_MORE_DATA) return rc;
    api::copyResponse(response, &found_);
    const VEXS_vltObjName& name = found_.objName;
    const bool named = *name.fileSpace != '\0' || *name.highLevel != '\0' || *name.lowLevel != '\0';
    return named ? rc : std::int16_t{VLT_RC_UNKNOWN_FORMAT};
  }

  // Only whole days count here; the server applies the upper bound.
  bool beforeStart(const VltDate& date) const {
    const unsigned year = ut::yearOf(start_);
    if (date.year != year) return date.year < year;
    if (date.month != start_.month) return date.month < start_.month;
    return date.day < start_.day;
  }

  // Puts the object that was returned into the list, unless it is out of range or Oracle knows it.
  // Returns 0 or 102.
  unsigned short takeObject() {
    char* const lowLevel = found_.objName.lowLevel;
    char* const key = lowLevel + (*lowLevel == '/' ? 1 : 0);
    if (beforeStart(found_.insDate)) return 0;
    TRACE(TR_ORCLEVEL2, " %s: Found '%s' on ZYL Server\n", kFunction, key);
    if (names_ != nullptr) std::fprintf(names_.get(), "%s\n", key);
    const bool known = tree_ != nullptr && tree_->SearchItem(key, utFindFilename) != nullptr;
    if (counts_ != nullptr) count(key, known);
    if (known) return 0;
    utZylObj_s object = {};
    fill(&object);
    TRACE(TR_ORCLEVEL2, " %s: Adding '%s' to the list\n", kFunction, object.name);
    const unsigned short rc = list_->addTail(object, 0);
    if (rc == 0) return 0;
    utility::reportText(nlsprintf(msg::kNoMemory));
    TRACE(TR_ORCLEVEL0, " %s: Exit - No Memory. rc =  %d\n\n", kFunction, rc);
    return rc;
  }

  void count(char* key, bool known) {
    ++counts_->objects;
    if (known) ++counts_->known;
    if (!ut::isAscii(key)) ++(known ? counts_->foreignKnown : counts_->foreignOffered);
    if (!known && beginsWithHandle(key)) ++counts_->cutOff;
  }

  // Whether the tree holds the beginning of a name, as long as the longest handle.
  bool beginsWithHandle(char* key) {
    if (tree_ == nullptr || counts_->longestHandle == 0) return false;
    std::size_t length = 0;  // bytes of the beginning
    for (std::size_t columns = 0; key[length] != '\0'; ++length) {
      if (!ut::isContinuation(key[length]) && columns++ == counts_->longestHandle) break;
    }
    if (key[length] == '\0') return false;
    const char next = std::exchange(key[length], '\0');
    const bool found = tree_->SearchItem(key, utFindFilename) != nullptr;
    key[length] = next;
    return found;
  }

  void fill(utZylObj_s* object) {
    std::snprintf(object->name, sizeof object->name, "%s%s%s", found_.objName.fileSpace,
                  found_.objName.highLevel, found_.objName.lowLevel);
    ut::ignoreResult(ut::copyText(object->node, session_.nodeName), "only shown");
    ut::ignoreResult(ut::copyText(object->owner, session_.owner), "of the same size");
    object->objId = found_.objId;
    object->insDate = found_.insDate;
    object->sizeEstimate = found_.sizeEstimate;
    object->compressed = found_.compressType == VLT_COMPRESSED ? 1 : 0;
    object->encryptionType = found_.encryptionType;
    object->clientDeduplicated = found_.clientDeduplicated;
  }

  // Ends the query after its last answer. Any other code ends it too, without a report: what was
  // listed until then is shown. Kept on purpose, pinned by Fault.OfEachCallInAQuery.
  unsigned short finish(std::int16_t answer) {
    const bool noMatch = answer == VLT_RC_NO_MATCH;
    if (noMatch) {
      // The log gets the text of code 0, not of the answer. Kept on purpose, pinned by
      // Fault.OfEachCallInAQuery.
      ut::ignoreResult(utility::reportCode(orc_, "vltGetNextQObj", 0, utility::Report::kLogOnly),
                       "logged");
      printNothingFound();
      TRACE(TR_ORCLEVEL2, " %s: Calling VLTENDQUERY(). vltHandle = %d\n", kFunction,
            orc_->vltHandle);
    }
    ut::ignoreResult(gVltApiObjP->dvltEndQuery(VltApiStatusObjP, orc_->vltHandle),
                     "the list is complete");
    if (counts_ != nullptr) {
      const bool ended = answer == VLT_RC_FINISHED || (noMatch && counts_->objects == 0);
      counts_->complete = ended && !skipped_;
    }
    const bool empty = answer == VLT_RC_FINISHED && list_->getFirst() == nullptr;
    if (empty) printNothingFound();
    if (noMatch) {
      TRACE(TR_ORCLEVEL1, " %s: Exit - No Match rc =%d\n\n", kFunction, 0);
    } else if (empty) {
      TRACE(TR_ORCLEVEL1, " %s: Exit - syncList Empty\n\n", kFunction);
    } else {
      TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
    }
    return 0;
  }

  static void printNothingFound() {
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kNothingToShow);
    nlprintf(msg::kBlankLine);
    nlprintf(msg::kBlankLine);
  }

  const nfDate start_;
  const nfDate end_;
  orcObj_t* orc_;
  ObjectList* list_;
  dsBPlusTree* tree_;
  utility::RangeCounts* counts_;
  bool skipped_ = false;  // an object whose record the library could not make
  ut::FilePtr names_;
  VltSessInfo session_ = {};
  VltDataBlk block_ = {};
  VEXS_qryRespBackupData found_ = {};  // the object at hand
  union Buffer {
    char bytes[kBufferLength];
    VltQryRespBackup response;
  } buffer_ = {};
  static_assert(sizeof(VltQryRespBackup) <= kBufferLength);
};

}  // namespace

unsigned short utGetFileList(const nfDate& start, const nfDate& end, orcObj_t* orc,
                             CLinkedList<utZylObj_s>* list, dsBPlusTree* tree,
                             utility::RangeCounts* counts) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  return Listing(start, end, orc, list, tree, counts).run();
}
