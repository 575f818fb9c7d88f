// syncdb_spool.cpp: what sqlplus spooled for one catalog becomes handles in the tree, see
// syncdb_spool.h.
//
// A row that is lost makes a good backup look forgotten; a row too many only hides an orphan. So an
// answer that may have lost rows is refused or becomes a doubt, and a line that can be read in
// several ways makes all its readings known.
//
//   spool file, as sqlplus writes it          read as
//   <blank line>
//   Session altered.                          a confirmation, skipped
//   <blank line>
//   SALES_df_731_1_1          <to column 80>  a row
//   <80 columns without an end>               a row that the next line continues
//   <its rest>                <to column 80>
//   <blank line>                              between rows: a piece without a handle
//   3 rows selected.                          the row count (from 6 rows on, by default)
//   ORA-01555: snapshot too old               the whole answer is void
//
// classifyLine says what a line is; AnswerReader keeps the rows, their readings and the count, and
// judges at the end.
#include "utility/syncdb_spool.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/progress.h"
#include "common/ut/psfile.h"
#include "common/ut/utf8.h"
#include "utility/exchange.h"
#include "utility/report.h"
#include "utility/spoolline.h"
#include "utility/syncdb_names.h"

namespace {

using utility::LineKind;
using utility::SpoolLine;

constexpr char kFunction[] = "utLoadBTree()";
constexpr unsigned short kNotReadable = msg::kSpoolFileNotRead.code();
constexpr unsigned short kNotSound = msg::kQueryFailed.code();
constexpr std::size_t kPieceSize = 513;
constexpr std::size_t kLongestHandle = 512;
constexpr std::size_t kFewLines = 40;  // lines whose every join is tried, without a row count

// "?", U+FFFD and U+00BF: what a conversion between character sets puts where it has no letter.
bool holdsReplacement(std::string_view text) {
  if (text.find('?') != text.npos) return true;
  if (ut::isAscii(text)) return false;
  return text.find("\xEF\xBF\xBD") != text.npos || text.find("\xC2\xBF") != text.npos;
}

class AnswerReader {
 public:
  AnswerReader(std::FILE* file, const char* path, dsBPlusTree* tree)
      : file_(file), path_(path), tree_(tree) {}

  // Returns 0, 2533 after a message, 2576, or the tree's code.
  unsigned short load() {
    char piece[kPieceSize];
    bool inLine = false;
    ut::Progress progress([](const char* count, const char* rate) {
      return nlsprintf(msg::kProgressReading, count, rate);
    });
    while (std::fgets(piece, sizeof piece, file_) != nullptr) {
      const std::size_t length = std::strlen(piece);
      inLine = length == 0 || piece[length - 1] != '\n';
      // A piece without a line end fills the buffer. A shorter one holds a NUL byte, or the file
      // ends in the middle of a line.
      if (inLine && length + 1 < sizeof piece) {
        return unsound(nlsprintf(msg::kAnswerCutShort, path_));
      }
      ++lineNumber_;
      const unsigned short rc = takeLine({piece, inLine ? length : length - 1});
      if (rc != 0) return rc;
      progress.advance();
    }
    if (std::ferror(file_) != 0) return kNotReadable;
    return inLine ? unsound(nlsprintf(msg::kAnswerCutShort, path_)) : judge();
  }

  const utility::CatalogAnswer& answer() const { return answer_; }

 private:
  static unsigned short unsound(const std::string& text) {
    utility::reportText(text);
    TRACE(TR_ORCLEVEL0, " %s: Exit - the answer is not sound: '%s'\n\n", kFunction, text.c_str());
    return kNotSound;
  }

  unsigned short takeLine(std::string_view text) {
    const SpoolLine line = utility::classifyLine(text);
    if (errorHeading_ && line.kind != LineKind::kBlank) {
      if (line.kind != LineKind::kWarning) return voidFor(line);
      errorHeading_ = false;
    }
    switch (line.kind) {
      case LineKind::kBlank:
        takeBlank(text);
        return 0;
      case LineKind::kError:
        return voidFor(line);
      case LineKind::kErrorHeading:
        errorHeading_ = true;
        return 0;
      case LineKind::kWarning:
        return 0;
      case LineKind::kRowCount:
        takeCount(line);
        return 0;
      case LineKind::kConfirmation:
        return begun_.empty() ? 0 : takeRow(line);  // else it continues a handle
      case LineKind::kOther:
        return begun_.empty() ? takeOther(line) : takeRow(line);
      case LineKind::kRow:
      case LineKind::kFullRow:
        break;
    }
    return takeRow(line);
  }

  unsigned short voidFor(const SpoolLine& line) const {
    return unsound(nlsprintf(msg::kAnswerHasError, path_, line.text));
  }

  void takeBlank(std::string_view line) {
    begun_.clear();
    // Before the first row a blank line says nothing, unless it is padded like a row.
    if (answer_.rows == 0 && line.size() >= utility::kSpoolWidth) ++nulls_;
    if (answer_.rows > 0) ++blanks_;
  }

  // The last count is the query's own: statements of a profile come before it.
  void takeCount(const SpoolLine& line) {
    counted_ = line.text;
    count_ = line.count;
    nullsCounted_ = nulls_ + (blanks_ > 1 ? blanks_ - 1 : 0);
    begun_.clear();
  }

  unsigned short takeRow(const SpoolLine& line) {
    nulls_ += blanks_;
    blanks_ = 0;
    ++answer_.lines;
    if (begun_.empty()) {
      ++answer_.rows;
      rowLength_ = 0;
    }
    rowLength_ += ut::columns(line.body);
    answer_.longest = std::max(answer_.longest, rowLength_);
    answer_.lettersLost = answer_.lettersLost || holdsReplacement(line.body);
    const short rc = insertReadings(line);
    if (rc == kTreeStored) keepForNext(line);
    return code(rc);
  }

  // What a line of several words may be if it is a row after all. It is not counted as one.
  unsigned short takeOther(const SpoolLine& line) {
    keepFewLines(line);
    return code(insertAll(line));
  }

  static unsigned short code(short rc) {
    if (rc != kTreeStored) {
      TRACE(TR_ORCLEVEL0, " %s: Exit - unknown error in bTree. rc = %d\n\n", kFunction, rc);
    }
    return static_cast<unsigned short>(rc);
  }

  // Inserts everything that the line can mean: by itself, and as the end of each handle that may
  // have begun in the lines before it. Counts what is new. Returns 0 or the tree's code.
  short insertReadings(const SpoolLine& line) {
    keepFewLines(line);
    bool added = false;
    const bool plain = begun_.empty() && line.body.size() == line.word.size() &&
                       !line.carriageReturn && line.word.front() != '"';
    const short rc = plain ? insert(line.word, &added) : insertAll(line, &added);
    // The longest reading was the last one: that is what this row, so far, is taken for.
    if (!begun_.empty() && lastAdded_) --answer_.handles;
    lastAdded_ = added;
    if (lastAdded_) ++answer_.handles;
    return rc;
  }

  // `*added`, if not null: the last reading was new.
  short insertAll(const SpoolLine& line, bool* added = nullptr) {
    readings_.clear();
    utility::appendReadings(line.body, &readings_);
    if (line.carriageReturn) readings_.push_back(std::string(line.body) + '\r');
    for (auto begun = begun_.rbegin(); begun != begun_.rend(); ++begun) {
      utility::appendReadings(*begun + std::string(line.body), &readings_);
    }
    bool isNew = false;
    short rc = kTreeStored;
    for (const std::string& reading : readings_) {
      // Alone it is sqlplus's confirmation of the date format.
      if (reading != "Session") rc = insert(reading, &isNew);
      if (rc != kTreeStored) break;
    }
    if (added != nullptr) *added = isNew;
    return rc;
  }

  // `*added`, if not null: it was not there yet.
  short insert(std::string_view item, bool* added = nullptr) {
    item_ = item;
    const short rc = tree_->IsertItem(item_.data(), static_cast<int>(item_.size()) + 1,
                                      utInsertFilename, utFindFilename);
    if (added != nullptr) *added = rc == kTreeStored;
    if (rc != DUP_VAL) return rc;
    TRACE(TR_ORCLEVEL2, " %s: - duplicate value in bTree\n", kFunction);
    return kTreeStored;
  }

  // A full line is continued by the next one, unless its handle happens to end there. In which of
  // several full lines a handle began cannot be told either, so all of them are kept.
  void keepForNext(const SpoolLine& line) {
    if (line.kind != LineKind::kFullRow) {
      begun_.clear();
      return;
    }
    if (firstFullLine_ == 0) firstFullLine_ = lineNumber_;
    for (std::string& begun : begun_) begun += line.body;
    std::erase_if(begun_, [](const std::string& begun) { return begun.size() > kLongestHandle; });
    begun_.emplace_back(line.body);
  }

  void keepFewLines(const SpoolLine& line) {
    if (fewLines_.size() <= kFewLines) fewLines_.emplace_back(line.body);
  }

  // Says whether the answer is whole: its count is that of the rows, or of the rows and the pieces
  // without a handle.
  unsigned short judge() {
    if (errorHeading_) return unsound(nlsprintf(msg::kAnswerHasError, path_, "ERROR"));
    answer_.counted = !counted_.empty();
    if (!answer_.counted) return answer_.rows < utility::kCountedFrom ? insertJoins() : 0;
    if (count_ == answer_.rows || count_ == answer_.rows + nullsCounted_) return 0;
    // A handle that fills its line and the one after it count as one. That this explains the count
    // is no proof: the answer is refused either way.
    const bool continued = answer_.lines > answer_.rows;
    if (continued && count_ > answer_.rows && count_ <= answer_.lines + nullsCounted_) {
      return unsound(nlsprintf(msg::kRowFillsLine, path_, firstFullLine_));
    }
    return unsound(nlsprintf(msg::kRowCountDiffers, path_, counted_, answer_.rows));
  }

  // Nothing says how many rows there are: a profile may have broken handles anywhere, so all joins
  // of consecutive lines are known as well. A blank at a break looks like the padding, or is left
  // out (WORD_WRAPPED): it is tried at each break and at all of them.
  unsigned short insertJoins() {
    answer_.hasOtherJoins = fewLines_.size() > kFewLines;
    if (answer_.hasOtherJoins) return 0;
    for (std::size_t first = 0; first < fewLines_.size(); ++first) {
      std::string plain = fewLines_[first], spaced = plain;
      std::vector<std::string> joins;  // those with one blank
      for (std::size_t next = first + 1; next < fewLines_.size(); ++next) {
        const std::string& line = fewLines_[next];
        for (std::string& join : joins) join += line;
        joins.push_back(plain);
        joins.back().append(1, ' ').append(line);
        plain += line;
        spaced.append(1, ' ').append(line);
        if (plain.size() > kLongestHandle) break;
        short rc = insert(plain);
        if (rc == kTreeStored) rc = insert(spaced);
        for (std::size_t i = 0; i < joins.size() && rc == kTreeStored; ++i) rc = insert(joins[i]);
        if (rc != kTreeStored) return code(rc);
      }
    }
    return 0;
  }

  std::FILE* file_;
  const char* path_;
  dsBPlusTree* tree_;
  utility::CatalogAnswer answer_;
  std::uint64_t lineNumber_ = 0;
  bool errorHeading_ = false;  // the next line says what the error is

  std::string counted_;  // sqlplus's last row count, as it is written
  std::uint64_t count_ = 0;
  std::uint64_t blanks_ = 0;        // blank lines since the last row
  std::uint64_t nulls_ = 0;         // blank lines that may be pieces without a handle
  std::uint64_t nullsCounted_ = 0;  // the same, with those before the count beyond the usual one

  std::vector<std::string> begun_;  // what the next line may continue, the longest first
  std::uint64_t firstFullLine_ = 0;
  std::size_t rowLength_ = 0;
  bool lastAdded_ = false;
  std::vector<std::string> fewLines_;  // the first lines that may be rows
  std::vector<std::string> readings_;
  std::string item_;
};

unsigned short reportNotReadable(const char* path) {
  utility::reportText(nlsprintf(msg::kSpoolFileNotRead, path));
  TRACE(TR_ORCLEVEL0, " %s: Exit - error opening file '%s' for reading\n\n", kFunction, path);
  return kNotReadable;
}

unsigned short reportUnsound(nls::Message<'s'> message, const char* path) {
  utility::reportText(nlsprintf(message, path));
  TRACE(TR_ORCLEVEL0, " %s: Exit - file '%s' is no answer of this query\n\n", kFunction, path);
  return kNotSound;
}

unsigned short load(std::FILE* file, const char* path, dsBPlusTree* tree,
                    utility::CatalogAnswer* answer) {
  AnswerReader reader(file, path, tree);
  const unsigned short rc = reader.load();
  if (rc == kNotReadable) return reportNotReadable(path);
  if (rc != 0) return rc;
  // On a full disk sqlplus loses rows and still ends with 0.
  if (!ut::hasRoomBeside(path)) return reportUnsound(msg::kNoRoomLeft, path);
  if (answer != nullptr) *answer = reader.answer();
  return 0;
}

}  // namespace

unsigned short utLoadBTree(const char* spoolPath, dsBPlusTree** tree,
                           utility::CatalogAnswer* answer) {
  TRACE(TR_ORCLEVEL1, " %s: ENTER\n", kFunction);
  struct stat entry;
  ut::FilePtr file = ut::openOwnFile(spoolPath, &entry);
  if (file == nullptr) {
    // What is not ours is left where it is.
    return errno == EEXIST ? reportUnsound(msg::kSpoolFileNotFromQuery, spoolPath)
                           : reportNotReadable(spoolPath);
  }
  unsigned short rc = kTreeNoMemory;
  try {
    const bool written = utility::SpoolFile::isWritten(entry.st_mtim);
    rc = written ? load(file.get(), spoolPath, *tree, answer)
                 : reportUnsound(msg::kSpoolFileNotFromQuery, spoolPath);
  } catch (const std::bad_alloc&) {
    TRACE(TR_ORCLEVEL0, " %s: Exit - no memory. rc = %d\n\n", kFunction, rc);
  }
  file.reset();
  utility::removeUnlessTraced(spoolPath);
  if (rc == kTreeNoMemory) nlprintf(msg::kNoMemory);
  if (rc == 0) TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  return rc;
}
