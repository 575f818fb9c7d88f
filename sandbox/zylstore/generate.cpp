// generate.cpp: a realistic site from a seed.
#include "sandbox/zylstore/generate.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>

#include "api/vltlib.h"

namespace sandbox {
namespace {

constexpr std::int64_t kDays = 365L * 3;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kLastBackupSecond = 3600L * 2;  // of today: the nightly run is over by then
constexpr std::int64_t kMegabyte = 1 << 20;

// A small generator of its own: the standard library's distributions differ from host to host.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}

  std::uint64_t next() {
    state_ += 0x9E3779B97F4A7C15;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

  // 0 to limit - 1. The tiny preference for small numbers does not matter here.
  std::int64_t below(std::int64_t limit) {
    return static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(limit));
  }

  std::int64_t between(std::int64_t least, std::int64_t most) {
    return least + below(most - least + 1);
  }
  bool percent(int chance) { return below(100) < chance; }

 private:
  std::uint64_t state_;
};

struct OracleDatabase {
  const char* name;
  std::int64_t backupSet;          // number of the last set
  std::int64_t id = 0;             // ten digits
  int piece = 0;                   // number of the last set's last piece
  const char* kind = "";           // what that set holds
  std::int64_t autobackupDay = 0;  // day of the last control-file backup
  int autobackup = 0;              // its number within the day
};

enum class Form { kDataFile, kArchivedLog, kUniqueName, kControlFile };

struct FormRow {
  Form form;
  int share;  // percent of the objects
  std::int64_t leastMegabytes, mostMegabytes;
};

constexpr FormRow kForms[] = {
    {Form::kDataFile, 45, 200, 30L * 1024},
    {Form::kArchivedLog, 30, 5, 2L * 1024},
    {Form::kUniqueName, 15, 50, 8L * 1024},
    {Form::kControlFile, 10, 8, 64},
};

const FormRow& pickForm(Random& random) {
  std::int64_t share = random.below(100);
  for (const FormRow& row : kForms) {
    if (share < row.share) return row;
    share -= row.share;
  }
  return kForms[0];
}

// A number in the digits 0-9a-v, at least `width` of them.
std::string base32(std::uint64_t value, std::size_t width) {
  std::string text;
  for (; value > 0 || text.size() < width; value /= 32)
    text.insert(text.begin(), "0123456789abcdefghijklmnopqrstuv"[value % 32]);
  return text;
}

template <typename... Values>
std::string formatted(const char* format, Values... values) {
  char text[160];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

// Makes handles, none twice.
class HandleMaker {
 public:
  explicit HandleMaker(std::uint64_t seed) {
    Random random(~seed);
    for (OracleDatabase& database : databases_)
      database.id = random.between(1'000'000'000, 4'200'000'000);
  }

  std::size_t databases() const { return databases_.size(); }

  // `index` is the object's number and `second` its time, counted from 1970.
  std::string make(Form form, std::size_t database, std::int64_t index, std::int64_t second,
                   Random& random) {
    OracleDatabase& source = databases_[database];
    switch (form) {
      case Form::kDataFile:
        return pieceOfSet(source, "df", second, random);
      case Form::kArchivedLog:
        return pieceOfSet(source, "al", second, random);
      case Form::kUniqueName:
        return base32(static_cast<std::uint64_t>(index), 4) +
               base32(static_cast<std::uint64_t>(second) % (1U << 20), 4) + "_1_1";
      case Form::kControlFile:
        break;
    }
    if (std::optional<std::string> handle = autobackup(source, second / kSecondsPerDay))
      return *handle;
    return pieceOfSet(source, "df", second, random);
  }

 private:
  // NAME_df_time_set_piece: now and then a set has more pieces than one.
  static std::string pieceOfSet(OracleDatabase& source, const char* kind, std::int64_t second,
                                Random& random) {
    const bool sameSet = kind == std::string_view(source.kind) && random.percent(20);
    source.piece = sameSet ? source.piece + 1 : 1;
    if (!sameSet) ++source.backupSet;
    source.kind = kind;
    return formatted("%s_%s_%lld_%lld_%d", source.name, kind,
                     static_cast<long long>(second % 1'000'000'000),
                     static_cast<long long>(source.backupSet), source.piece);
  }

  // c-id-day-number: the number has two hexadecimal digits, so a day can run out of them.
  static std::optional<std::string> autobackup(OracleDatabase& source, std::int64_t day) {
    source.autobackup = day == source.autobackupDay ? source.autobackup + 1 : 0;
    source.autobackupDay = day;
    if (source.autobackup > 0xFF) return std::nullopt;
    return formatted("c-%lld-%08lld-%02x", static_cast<long long>(source.id),
                     static_cast<long long>(stampOf(day, 0) / 1'000'000),
                     static_cast<unsigned>(source.autobackup));
  }

  std::array<OracleDatabase, 4> databases_ = {
      {{"ORCL", 4700}, {"SALES", 1200}, {"HRPROD", 880}, {"FINDWH", 15000}}};
};

class Generator {
 public:
  Generator(Store& store, const Node& node, std::vector<OracleCatalog>& catalogs,
            const SiteRequest& request)
      : request_(request), random_(request.seed), handles_(request.seed), objects_(store) {
    for (OracleCatalog& catalog : catalogs) pieces_.emplace_back(catalog);
    object_.node = node.id;
    object_.fileSpace = request.fileSpace;
    object_.highLevel = request.highLevel;
    object_.owner = request.owner;
    object_.state = VLT_STATE_ACTIVE;
  }

  SiteSummary run() {
    std::int64_t orphansLeft = request_.orphans;
    for (std::int64_t i = 0; i < request_.objects; ++i) {
      const std::size_t database =
          static_cast<std::size_t>(random_.below(static_cast<std::int64_t>(handles_.databases())));
      const std::string handle = addObject(i, database);
      // Each object's chance is what is left to choose over what is left: that ends at exactly the
      // wanted number, with every choice equally likely.
      if (random_.below(request_.objects - i) < orphansLeft)
        --orphansLeft;
      else
        addPieces(handle, database % pieces_.size());
    }
    return summary_;
  }

 private:
  // The object's second, counted from 1970: each object has an equal share of the time.
  std::int64_t secondOf(std::int64_t index) {
    const std::int64_t end = dayNumber(request_.today) * kSecondsPerDay + kLastBackupSecond;
    const std::int64_t span = kDays * kSecondsPerDay;
    std::int64_t from = span * index / request_.objects;
    // However few objects there are, the newest one is of today.
    if (index == request_.objects - 1) from = std::max(from, span - kLastBackupSecond);
    const std::int64_t to = span * (index + 1) / request_.objects;
    return end - span + from + (to > from ? random_.below(to - from) : 0);
  }

  std::string addObject(std::int64_t index, std::size_t database) {
    static constexpr int kEncryptions[] = {
        0, 0, 0, VLT_ENCRYPT_DES_56, VLT_ENCRYPT_AES_128, VLT_ENCRYPT_AES_256};
    const FormRow& form = pickForm(random_);
    const std::int64_t second = secondOf(index);
    std::string handle = handles_.make(form.form, database, index, second, random_);
    object_.lowLevel = "/" + handle;
    object_.inserted = stampOf(second / kSecondsPerDay, static_cast<int>(second % kSecondsPerDay));
    object_.size = random_.between(form.leastMegabytes * kMegabyte, form.mostMegabytes * kMegabyte);
    object_.compressed = random_.percent(30);
    object_.encryption = kEncryptions[random_.below(std::size(kEncryptions))];
    object_.deduplicated = random_.percent(10);
    objects_.add(object_);
    if (summary_.first == 0) summary_.first = object_.inserted;
    summary_.last = object_.inserted;
    return handle;
  }

  void addPieces(const std::string& handle, std::size_t catalog) {
    const Stamp endOfDay = object_.inserted / 1'000'000 * 1'000'000 + 235959;
    const DateParts inserted = toParts(object_.inserted);
    const std::int64_t second = inserted.hour * 3600 + inserted.minute * 60 + inserted.second;
    const std::int64_t later = second + random_.below(90);
    const Stamp completed = later >= kSecondsPerDay
                                ? endOfDay
                                : stampOf(dayNumber(object_.inserted), static_cast<int>(later));
    pieces_[catalog].add(handle, completed);
    ++summary_.pieces;
    if (pieces_.size() < 2 || !random_.percent(10)) return;
    pieces_[(catalog + 1) % pieces_.size()].add(handle, completed);
    ++summary_.pieces;
    ++summary_.inTwoCatalogs;
  }

  const SiteRequest& request_;
  Random random_;
  HandleMaker handles_;
  ObjectWriter objects_;
  std::vector<PieceWriter> pieces_;
  Object object_;
  SiteSummary summary_;
};

}  // namespace

SiteSummary generateSite(Store& store, const Node& node, std::vector<OracleCatalog>& catalogs,
                         const SiteRequest& request) {
  WriteTransaction storeChange(store.database());
  std::vector<std::unique_ptr<WriteTransaction>> catalogChanges;
  catalogChanges.reserve(catalogs.size());
  for (OracleCatalog& catalog : catalogs)
    catalogChanges.push_back(std::make_unique<WriteTransaction>(catalog.database()));
  const SiteSummary summary = Generator(store, node, catalogs, request).run();
  for (auto& change : catalogChanges) change->commit();
  storeChange.commit();
  return summary;
}

}  // namespace sandbox
