// syncdb_spool.cpp: what sqlplus spooled for one catalog becomes handles in the tree.
//
// A row that is lost makes a good backup look forgotten; a row too many only hides an orphan. So
// doubts end the command, and where a line can be read in several ways all readings go into the
// tree.
//
//   spool file, as sqlplus writes it          read as
//   <blank line>
//   Session altered.                          skipped by its first word
//   <blank line>
//   SALES_df_731_1_1          <to column 80>  a row
//   <80 columns without an end>               a row that goes on in the next line
//   <its rest>                <to column 80>
//   <blank line>
//   3 rows selected.                          checked against the rows (from 6 rows on, by default)
//   ORA-01555: snapshot too old               the whole listing is void
#include "utility/syncdb_spool.h"

#include <sys/stat.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/errormsg.h"
#include "common/nls/nls.h"
#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/progress.h"
#include "common/ut/psfile.h"
#include "common/ut/utf8.h"
#include "utility/exchange.h"
#include "utility/report.h"
#include "utility/syncdb_names.h"

namespace {

constexpr char kFunction[] = "utLoadBTree()";
constexpr unsigned short kNotReadable = msg::kSpoolFileNotRead.code();
constexpr unsigned short kNotSound = msg::kQueryFailed.code();
constexpr std::size_t kPieceSize = 513;
constexpr std::size_t kLineWidth = 80;  // as the script sets it
constexpr std::size_t kLongestHandle = 512;
constexpr std::uint64_t kCountedFrom = 6;  // rows from which on sqlplus counts them by default

// Every line of a listing of a million goes through this: plain comparisons, no search in a set.
bool isSeparator(char c) { return c == ' ' || c == ',' || c == '\n' || c == '\t'; }

// The first word of a text, which is taken off with the separators around it.
std::string_view takeWord(std::string_view* text) {
  std::size_t start = 0;
  while (start < text->size() && isSeparator((*text)[start])) ++start;
  std::size_t end = start;
  while (end < text->size() && !isSeparator((*text)[end])) ++end;
  const std::string_view word = text->substr(start, end - start);
  text->remove_prefix(end);
  return word;
}

std::string_view withoutEnd(std::string_view line) {
  while (!line.empty() && isSeparator(line.back())) line.remove_suffix(1);
  return line;
}

// "ORA-00942:" and the like: what Oracle and its tools say when something went wrong. Two of them
// come with a logon that succeeded.
bool isError(std::string_view word) {
  static constexpr std::string_view kSources[] = {"ORA-", "SP2-", "TNS-", "PLS-"};
  static constexpr std::string_view kWarnings[] = {"ORA-28002:", "ORA-28011:"};
  for (const std::string_view warning : kWarnings) {
    if (word.starts_with(warning)) return false;
  }
  for (const std::string_view source : kSources) {
    if (!word.starts_with(source)) continue;
    std::size_t end = source.size();
    while (end < word.size() && ut::isDigit(word[end])) ++end;
    return end > source.size() && end < word.size() && word[end] == ':';
  }
  return false;
}

// The number in "12 rows selected." or "no rows selected", if the line is that. A number that
// cannot be read is one that no listing has.
std::optional<std::uint64_t> rowCount(std::string_view line) {
  const std::string_view number = takeWord(&line), rows = takeWord(&line), verb = takeWord(&line);
  if (rows != "rows" && rows != "row") return std::nullopt;
  if (verb != "selected." && verb != "selected") return std::nullopt;
  if (number == "no") return 0;
  std::uint64_t count = 0;
  const char* end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, count);
  return stop == end && error == std::errc() ? count : UINT64_MAX;
}

// How wide a line is on the screen, if it is UTF-8.
std::size_t columns(std::string_view line) {
  std::size_t count = 0;
  for (const char c : line) count += !ut::isContinuation(c);
  return count;
}
bool fillsLine(std::string_view line) {
  return line.size() == kLineWidth || columns(line) == kLineWidth;
}

// Reads one spool file into the tree and judges whether it is whole.
class Spool {
 public:
  Spool(std::FILE* file, const char* path, dsBPlusTree* tree)
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
    TRACE(TR_ORCLEVEL0, " %s: Exit - the listing is not sound: '%s'\n\n", kFunction, text.c_str());
    return kNotSound;
  }

  unsigned short takeLine(std::string_view line) {
    endsWithRow_ = false;
    std::string_view rest = line;
    const std::string_view word = takeWord(&rest);
    // sqlplus confirms the date-format statement with "Session altered."
    const bool confirmation = word == "Session" && begun_.empty();
    if (word.empty() || confirmation) {
      begun_.clear();
      return 0;
    }
    const std::string_view body = withoutEnd(line);
    const std::string_view text = body.substr(static_cast<std::size_t>(word.data() - body.data()));
    if (isError(word)) return unsound(nlsprintf(msg::kAnswerHasError, path_, text));
    if (text != word && rowCount(text)) {
      counted_ = text;
      begun_.clear();
    } else if (!begun_.empty()) {
      endsWithRow_ = true;
    } else if (text != "ERROR:") {
      endsWithRow_ = text == word || fillsLine(line);
      if (endsWithRow_) ++answer_.rows;
    }
    const short rc = insertReadings(body, text, word);
    if (rc == 0) {
      keepForNext(line);
    } else {
      TRACE(TR_ORCLEVEL0, " %s: Exit - unknown error in bTree. rc = %d\n\n", kFunction, rc);
    }
    return static_cast<unsigned short>(rc);
  }

  // Puts everything into the tree that the line can mean: its first word; all of it, where it has
  // several; and each handle that may have begun before and ends here. Returns 0 or the tree's
  // code.
  short insertReadings(std::string_view body, std::string_view text, std::string_view word) {
    bool added = false;
    short rc = word == "Session" ? kTreeStored : insert(word, &added);
    if (rc == 0 && text != word) rc = insert(text, &added);
    for (auto begun = begun_.rbegin(); rc == 0 && begun != begun_.rend(); ++begun) {
      rc = insert(std::string(*begun) += body, &added);
    }
    if (!endsWithRow_) return rc;
    // The last one was the longest: that is what this row, so far, is taken for.
    if (!begun_.empty() && lastAdded_) --answer_.handles;
    lastAdded_ = added;
    if (lastAdded_) ++answer_.handles;
    return rc;
  }

  // `*added`: it was not there yet.
  short insert(std::string_view item, bool* added) {
    item_ = item;
    const short rc = tree_->IsertItem(item_.data(), static_cast<int>(item_.size()) + 1,
                                      utInsertFilename, utFindFilename);
    *added = rc == kTreeStored;
    if (rc != DUP_VAL) return rc;
    TRACE(TR_ORCLEVEL2, " %s: - duplicate value in bTree\n", kFunction);
    return kTreeStored;
  }

  // A line that is full to its last column goes on in the next one, unless its handle happens to
  // end there: which of the full lines before it a handle began in cannot be told.
  void keepForNext(std::string_view line) {
    if (!fillsLine(line) || isSeparator(line.back())) {
      begun_.clear();
      return;
    }
    for (std::string& begun : begun_) begun += line;
    std::erase_if(begun_, [](const std::string& begun) { return begun.size() > kLongestHandle; });
    begun_.emplace_back(line);
  }

  unsigned short judge() {
    if (!counted_.empty() && rowCount(counted_) != answer_.rows) {
      return unsound(nlsprintf(msg::kRowCountDiffers, path_, counted_, answer_.rows));
    }
    // With its feedback switched off sqlplus counts nothing: the listing may be whole, or have lost
    // its end between two lines.
    if (counted_.empty() && endsWithRow_ && answer_.rows >= kCountedFrom) {
      agent::showAndLog(nlsprintf(msg::kNoRowCount, path_));
    }
    return 0;
  }

  std::FILE* file_;
  const char* path_;
  dsBPlusTree* tree_;
  utility::CatalogAnswer answer_;
  std::string counted_;             // sqlplus's own count, as it stands there
  std::vector<std::string> begun_;  // what may go on in the next line, the longest first
  std::string item_;
  bool endsWithRow_ = false;
  bool lastAdded_ = false;
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
  Spool spool(file, path, tree);
  const unsigned short rc = spool.load();
  if (rc == kNotReadable) return reportNotReadable(path);
  if (rc != 0) return rc;
  // On a full disk sqlplus loses rows and still ends well.
  if (!ut::hasRoomBeside(path)) return reportUnsound(msg::kNoRoomLeft, path);
  if (answer != nullptr) *answer = spool.answer();
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
  if (rc == 0) TRACE(TR_ORCLEVEL1, " %s: Exit - OK\n\n", kFunction);
  return rc;
}
