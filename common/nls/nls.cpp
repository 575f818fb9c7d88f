// nls.cpp: the message system, see nls.h.
#include "common/nls/nls.h"

#include <nl_types.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "common/ut/agttrc.h"
#include "common/ut/ascii.h"
#include "common/ut/nfdate.h"
#include "common/ut/path.h"
#include "common/ut/progress.h"
#include "common/ut/psterm.h"
#include "common/ut/result.h"
#include "common/ut/strutil.h"
#include "common/ut/utf8.h"

namespace {

constexpr int kMessageSet = 1;
constexpr int kResponseSet = 2;
constexpr std::size_t kPrefixLength = 3;
constexpr std::size_t kIdentifierLength = kPrefixLength + 4;
constexpr const char* kYesNo = "YN";  // for a catalog that lists no letters

// The languages that have a catalog, by the first letters of their names, in capitals.
struct Language {
  const char* catalog;
  const char* prefixes[2];

  bool speaks(std::string_view name) const {
    return name.starts_with(prefixes[0]) || name.starts_with(prefixes[1]);
  }
};
constexpr Language kLanguages[] = {
    {nls::kDefaultCatalog, {"EN", "AMENG"}},
    {"vexo_de.cat", {"DE", "GER"}},
};

// What catopen returns when it fails.
// NOLINTNEXTLINE(performance-no-int-to-ptr,misc-misplaced-const)
const nl_catd kNoCatalog = reinterpret_cast<nl_catd>(-1);

// An entry of the catalog, taken apart.
struct Entry {
  enum class State { kGood, kMissing, kCorrupted };
  int number = -1;
  State state = State::kMissing;
  std::string identifier;  // empty for a text that is shown alone
  std::string text;
};

class MessageCatalog {
 public:
  MessageCatalog() = default;
  ~MessageCatalog() { close(); }
  MessageCatalog(const MessageCatalog&) = delete;
  MessageCatalog& operator=(const MessageCatalog&) = delete;

  void setPrefix(const char* prefix) {
    ut::ignoreResult(ut::copyText(prefix_, prefix), "a prefix has three letters");
  }

  bool open(const char* path, std::size_t cacheSize) {
    close();
    descriptor_ = ::catopen(path, 0);
    if (descriptor_ == kNoCatalog) return false;
    cache_.resize(cacheSize == 0 ? 1 : cacheSize);
    return true;
  }

  void close() {
    if (descriptor_ != kNoCatalog) {
      ut::ignoreResult(::catclose(descriptor_), "it was only read");
    }
    descriptor_ = kNoCatalog;
    cache_.clear();
  }

  // The entry of a number. The cache is a ring: a new entry replaces the oldest, so the reference
  // is good until the next call.
  const Entry& fetch(int number) {
    if (cache_.empty()) cache_.resize(1);
    for (const Entry& entry : cache_) {
      if (entry.number == number) return entry;
    }
    Entry& slot = cache_[oldest_++ % cache_.size()];
    slot = takeApart(number, raw(kMessageSet, number));
    return slot;
  }

  std::string responses(int number) const {
    const char* letters = raw(kResponseSet, number);
    std::string result = letters == nullptr ? "" : letters;
    ut::upperCase(result.data());
    return result.empty() ? kYesNo : result;
  }

 private:
  const char* raw(int set, int number) const {
    if (descriptor_ == kNoCatalog) return nullptr;
    static const char kNone[] = "";  // told by its address from an entry that is empty
    const char* text = ::catgets(descriptor_, set, number, kNone);
    return text == kNone ? nullptr : text;
  }

  // Only the letter is checked; prefix and number are shown as the entry has them.
  Entry takeApart(int number, const char* raw) const {
    Entry entry;
    entry.number = number;
    char identifier[24];
    std::snprintf(identifier, sizeof identifier, "%.3s%04d", prefix_, number);
    entry.identifier = identifier;
    if (raw == nullptr) return entry;
    entry.state = Entry::State::kCorrupted;
    const std::size_t length = std::strlen(raw);
    if (length <= kIdentifierLength || raw[kIdentifierLength] < 'E' ||
        raw[kIdentifierLength] > 'Z') {
      return entry;
    }
    entry.state = Entry::State::kGood;
    if (raw[kIdentifierLength] == 'Z') {
      entry.identifier.clear();
    } else {
      entry.identifier.assign(raw, kIdentifierLength + 1);
    }
    entry.text = raw + kIdentifierLength + 1;
    return entry;
  }

  char prefix_[kPrefixLength + 1] = "";
  nl_catd descriptor_ = kNoCatalog;
  std::vector<Entry> cache_;
  std::size_t oldest_ = 0;
};

// The one message object. Written by newNlsGlobalObject and destroyNlsGlobalObject only.
MessageCatalog* catalog = nullptr;

// The text of a message whose entry cannot be used: what is wrong with the entry, then every
// insert, so that nothing the caller had to say is lost.
std::string substitute(int number, const char* wrong, std::span<const nls::Insert> inserts) {
  char start[64];
  std::snprintf(start, sizeof start, "QRB%04dE Message %s", number, wrong);
  std::string result = start;
  const char* between = ": ";
  for (const nls::Insert& insert : inserts) {
    result += between;
    const bool text = insert.kind() == nls::Insert::Kind::kText;
    const bool letter = insert.kind() == nls::Insert::Kind::kCharacter;
    const bool done = nls::render(text ? "%s" : letter ? "%c" : "%d", {&insert, 1}, result);
    ut::ignoreResult(done, "the conversion was chosen to fit");
    between = ", ";
  }
  return result;
}

// The messages that only carry other texts need no catalog.
bool builtIn(int number, std::span<const nls::Insert> inserts, std::string* out) {
  static constexpr struct {
    int number;
    const char* text;
  } kTexts[] = {
      {msg::kText.number(), "%s"}, {msg::kLine.number(), "%s\n"}, {msg::kBlankLine.number(), "\n"}};
  for (const auto& row : kTexts) {
    if (row.number == number) return nls::render(row.text, inserts, *out);
  }
  return false;
}

struct Shown {
  std::string text;
  bool ownLine;  // it begins with an identifier, so it is a line of its own
  bool whole;    // it is what the catalog has
};

Shown compose(int number, std::span<const nls::Insert> inserts) {
  const bool noCatalog = catalog == nullptr;
  const Entry missing = {};
  const Entry& entry = noCatalog ? missing : catalog->fetch(number);
  std::string plain;
  if (entry.state == Entry::State::kMissing && builtIn(number, inserts, &plain)) {
    return {plain, false, true};
  }
  if (entry.state == Entry::State::kMissing) {
    return {substitute(number, "not found in the message catalog", inserts), true, false};
  }
  std::string result = entry.identifier;
  if (!result.empty()) result += ' ';
  if (entry.state == Entry::State::kGood && nls::render(entry.text, inserts, result)) {
    return {result, !entry.identifier.empty(), true};
  }
  return {substitute(number, "corrupted in the message catalog", inserts), true, false};
}

bool openIn(const char* directory, const char* name, int cacheSize, nlsReturnInfo* info) {
  const std::string path = ut::pathIn(directory, name);
  if (!catalog->open(path.c_str(), static_cast<std::size_t>(cacheSize > 0 ? cacheSize : 1))) {
    return false;
  }
  if (info != nullptr) {
    ut::ignoreResult(ut::copyText(info->catalogPath, path), "only shown");
  }
  return true;
}

// The letters as a list: "Y, N".
std::string listOf(std::string_view letters) {
  std::string list;
  for (const char letter : letters) list.append(list.empty() ? "" : ", ") += letter;
  return list;
}

// On a terminal, lines break between words. Files and pipes get the text unchanged.
std::string fittedToTerminal(const std::string& text) {
  if (::isatty(STDOUT_FILENO) == 0) return text;
  int rows = 0, cols = 0;
  psGetScreenSize(&rows, &cols);
  return ut::wrapped(text, static_cast<std::size_t>(cols));
}

}  // namespace

unsigned short newNlsGlobalObject() {
  if (catalog == nullptr) catalog = new (std::nothrow) MessageCatalog;
  return catalog == nullptr ? nls::kNoMemory : 0;
}

void destroyNlsGlobalObject() {
  delete catalog;
  catalog = nullptr;
}

void nlsSetPrefix(const char* prefix) {
  if (catalog != nullptr) catalog->setPrefix(prefix);
}

unsigned short nlinit(const char* repository, int cacheSize, const char* directory,
                      [[maybe_unused]] int clientType, int dateFormat, int timeFormat,
                      int numberFormat, nlsReturnInfo* info, const char* defaultCatalog) {
  // First, and whatever happens to the catalog: trace and error log use the formats as well.
  ut::setRunFormats({dateFormat, timeFormat, numberFormat});
  if (info != nullptr) *info = {};
  if (catalog == nullptr) return nls::kCatalogNotOpened;
  try {
    if (openIn(directory, repository, cacheSize, info)) return 0;
    if (!openIn(directory, defaultCatalog, cacheSize, info)) return nls::kCatalogNotOpened;
    if (info != nullptr) info->usedDefault = 1;
    TRACE(TR_NLS, " %s: '%s' cannot be opened, using '%s'\n", "nlinit()", repository,
          defaultCatalog);
    return 0;
  } catch (const std::bad_alloc&) {
    return nls::kCatalogNotOpened;
  }
}

void nlterm() {
  if (catalog != nullptr) catalog->close();
}

void psNlsGetReposName(const char* language, char* out, std::size_t size) {
  char name[64] = "";
  std::size_t used = 0;
  for (; *language != '\0' && used + 1 < sizeof name; ++language) {
    const char c = *language;
    if (ut::isLetter(c) || ut::isDigit(c) || c == '_') name[used++] = c;
  }
  name[used] = '\0';
  ut::upperCase(name);
  for (const Language& row : kLanguages) {
    if (!row.speaks(name)) continue;
    std::snprintf(out, size, "%s", row.catalog);
    return;
  }
  ut::lowerCase(name);
  std::snprintf(out, size, used == 0 ? nls::kDefaultCatalog : "vexo_%s.cat", name);
}

namespace nls {

std::string format(int number, std::span<const Insert> inserts) {
  try {
    return compose(number, inserts).text;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

bool isWhole(int number, std::span<const Insert> inserts) {
  try {
    return compose(number, inserts).whole;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void print(int number, std::span<const Insert> inserts) {
  ut::eraseProgress();
  try {
    const Shown shown = compose(number, inserts);
    // The other texts are screen lines, laid out in columns, and prompts.
    const bool sentences = shown.ownLine || number == msg::kLine.number();
    const std::string text = sentences ? fittedToTerminal(shown.text) : shown.text;
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (shown.ownLine) std::fputc('\n', stdout);
  } catch (const std::bad_alloc&) {
    std::fputs("QRB2522S Not enough memory.\n", stdout);
  }
}

std::string plainText(Message<> message) {
  try {
    if (catalog == nullptr) return {};
    const Entry& entry = catalog->fetch(message.number());
    return entry.state == Entry::State::kGood ? entry.text : std::string();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

int ask(Message<> question, Message<'s'> mismatch) {
  try {
    const std::string letters = catalog == nullptr ? kYesNo : catalog->responses(question.number());
    const bool whole = isWhole(question.number(), {});
    for (;;) {
      nlprintf(question);
      std::fflush(stdout);
      char answer[64];
      if (ut::readLine(stdin, answer, sizeof answer) == ut::ReadResult::kEnd) return -1;
      const char* first = answer + std::strspn(answer, " ");
      char letter[2] = {*first, '\0'};
      ut::upperCase(letter);
      const std::size_t place = letter[0] == '\0' ? letters.npos : letters.find(letter[0]);
      // No yes to a question that cannot be read.
      if (place == 0 && !whole) return -1;
      if (place != letters.npos) return static_cast<int>(place);
      nlprintf(mismatch, listOf(letters));
    }
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

}  // namespace nls
