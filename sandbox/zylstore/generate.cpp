// generate.cpp: a realistic site from a seed.
#include "sandbox/zylstore/generate.h"

#include <algorithm>
#include <array>
#include <memory>
#include <random>

#include "api/vltlib.h"

namespace sandbox {
namespace {

constexpr std::int64_t kDays = 365L * 3;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kLastBackupSecond = 3600L * 2;  // of today: the nightly run is over by then
constexpr std::int64_t kMegabyte = 1 << 20;

// The standard fixes the engine's sequence, but not the results of its distributions. Drawing by
// remainder gives the same site on every host.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  // 0 to limit - 1. The slight preference for small numbers does not matter here.
  std::int64_t below(std::int64_t limit) {
    return static_cast<std::int64_t>(engine_() % static_cast<std::uint64_t>(limit));
  }

  std::int64_t between(std::int64_t least, std::int64_t most) {
    return least + below(most - least + 1);
  }
  bool percent(int chance) { return below(100) < chance; }

 private:
  std::mt19937_64 engine_;
};

struct Form {
  int share;         // percent of the objects
  const char* kind;  // of the pieces of a backup set, as in their handles; null: see handleOf()
  std::int64_t leastMegabytes, mostMegabytes;
};

constexpr Form kForms[] = {
    {45, "df", 200, 30L * 1024},   // data files
    {30, "al", 5, 2L * 1024},      // archived logs
    {15, nullptr, 50, 8L * 1024},  // unique names
    {10, "c", 8, 64},              // control file
};

struct OracleDatabase {
  const char* name;
  std::int64_t backupSet;          // number of the last set
  std::int64_t id = 0;             // ten digits
  int piece = 0;                   // number of the last set's last piece
  const char* kind = "";           // what that set holds
  std::int64_t autobackupDay = 0;  // day of the last control-file backup
  unsigned autobackup = 0;         // its number within the day
};

// A number in the digits 0-9a-v, at least `width` of them.
std::string base32(std::uint64_t value, std::size_t width) {
  std::string text;
  for (; value > 0 || text.size() < width; value /= 32) {
    text.insert(text.begin(), "0123456789abcdefghijklmnopqrstuv"[value % 32]);
  }
  return text;
}

class Generator {
 public:
  Generator(Store& store, const Node& node, std::vector<OracleCatalog>& catalogs,
            const SiteRequest& request)
      : request_(request), random_(request.seed), objects_(store) {
    for (OracleCatalog& catalog : catalogs) pieces_.emplace_back(catalog);
    Random identifiers(~request.seed);
    for (OracleDatabase& database : databases_) {
      database.id = identifiers.between(1'000'000'000, 4'200'000'000);
    }
    object_.node = node.id;
    object_.fileSpace = request.fileSpace;
    object_.highLevel = "/oracle";
    object_.owner = request.owner;
    object_.state = VLT_STATE_ACTIVE;
  }

  SiteSummary run() {
    std::int64_t orphansLeft = request_.orphans;
    for (std::int64_t i = 0; i < request_.objects; ++i) {
      const std::int64_t database = random_.below(std::ssize(databases_));
      const std::string handle = addObject(i, databases_[static_cast<std::size_t>(database)]);
      // Each object is an orphan with the chance orphans left / objects left. That gives exactly
      // the number asked for, and every choice is equally likely.
      if (random_.below(request_.objects - i) < orphansLeft) {
        --orphansLeft;
      } else {
        addPieces(handle, static_cast<std::size_t>(database) % pieces_.size());
      }
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

  const Form& pickForm() {
    std::int64_t share = random_.below(100);
    const Form* form = kForms;
    while (share >= form->share) share -= form++->share;
    return *form;
  }

  std::string addObject(std::int64_t index, OracleDatabase& database) {
    static constexpr int kEncryptions[] = {
        0, 0, 0, VLT_ENCRYPT_DES_56, VLT_ENCRYPT_AES_128, VLT_ENCRYPT_AES_256};
    const Form& form = pickForm();
    second_ = secondOf(index);
    std::string handle = handleOf(form, index, database);
    object_.lowLevel = "/" + handle;
    object_.inserted = stampAt(second_ % kSecondsPerDay);
    object_.size = random_.between(form.leastMegabytes * kMegabyte, form.mostMegabytes * kMegabyte);
    object_.compressed = random_.percent(30);
    object_.encryption = kEncryptions[random_.below(std::ssize(kEncryptions))];
    object_.deduplicated = random_.percent(10);
    objects_.add(object_);
    if (summary_.first == 0) summary_.first = object_.inserted;
    summary_.last = object_.inserted;
    return handle;
  }

  // A second of the object's day.
  Stamp stampAt(std::int64_t secondOfDay) const {
    return stampOf(second_ / kSecondsPerDay, static_cast<int>(secondOfDay));
  }

  // No handle is made twice: each holds the object's number, or one that counts up.
  std::string handleOf(const Form& form, std::int64_t index, OracleDatabase& source) {
    if (form.kind == nullptr) {
      return base32(static_cast<std::uint64_t>(index), 4) +
             base32(static_cast<std::uint64_t>(second_) % (1U << 20), 4) + "_1_1";
    }
    const bool isControlFile = form.kind == std::string_view("c");
    if (isControlFile) {
      const std::int64_t day = second_ / kSecondsPerDay;
      source.autobackup = day == source.autobackupDay ? source.autobackup + 1 : 0;
      source.autobackupDay = day;
      // Two hexadecimal digits: a day can run out of them.
      if (source.autobackup <= 0xFF) return autobackupOf(source);
    }
    return pieceOf(source, isControlFile ? "df" : form.kind);
  }

  // c-id-day-number
  std::string autobackupOf(const OracleDatabase& source) const {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    return "c-" + std::to_string(source.id) + "-" + std::to_string(stampAt(0) / 1'000'000) + "-" +
           kDigits[source.autobackup / 16] + kDigits[source.autobackup % 16];
  }

  // NAME_df_time_set_piece: now and then a set has more pieces than one.
  std::string pieceOf(OracleDatabase& source, const char* kind) {
    const bool sameSet = kind == std::string_view(source.kind) && random_.percent(20);
    source.piece = sameSet ? source.piece + 1 : 1;
    if (!sameSet) ++source.backupSet;
    source.kind = kind;
    return std::string(source.name) + "_" + kind + "_" + std::to_string(second_ % 1'000'000'000) +
           "_" + std::to_string(source.backupSet) + "_" + std::to_string(source.piece);
  }

  void addPieces(const std::string& handle, std::size_t catalog) {
    const Stamp completed =
        stampAt(std::min(second_ % kSecondsPerDay + random_.below(90), kSecondsPerDay - 1));
    pieces_[catalog].add(handle, completed);
    ++summary_.pieces;
    if (pieces_.size() < 2 || !random_.percent(10)) return;
    pieces_[(catalog + 1) % pieces_.size()].add(handle, completed);
    ++summary_.pieces;
    ++summary_.inTwoCatalogs;
  }

  const SiteRequest& request_;
  Random random_;
  std::array<OracleDatabase, 4> databases_ = {
      {{"ORCL", 4700}, {"SALES", 1200}, {"HRPROD", 880}, {"FINDWH", 15000}}};
  ObjectWriter objects_;
  std::vector<PieceWriter> pieces_;
  std::int64_t second_ = 0;  // of the object that is being made, counted from 1970
  Object object_;
  SiteSummary summary_;
};

}  // namespace

SiteSummary generateSite(Store& store, const Node& node, std::vector<OracleCatalog>& catalogs,
                         const SiteRequest& request) {
  WriteTransaction storeChange(store.database());
  std::vector<std::unique_ptr<WriteTransaction>> catalogChanges;
  catalogChanges.reserve(catalogs.size());
  for (OracleCatalog& catalog : catalogs) {
    catalogChanges.push_back(std::make_unique<WriteTransaction>(catalog.database()));
  }
  const SiteSummary summary = Generator(store, node, catalogs, request).run();
  for (auto& change : catalogChanges) change->commit();
  storeChange.commit();
  return summary;
}

}  // namespace sandbox
