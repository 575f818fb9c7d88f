// catalogs.cpp: commands on Oracle catalogs, and the one that makes a whole site.
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iostream>
#include <limits>

#include "sandbox/store/oracle_catalog.h"
#include "sandbox/store/site.h"
#include "sandbox/store/text.h"
#include "sandbox/zylstore/commands.h"
#include "sandbox/zylstore/generate.h"

namespace sandbox {
namespace {

constexpr Stamp kEarliest = 0;
constexpr Stamp kLatest = std::numeric_limits<Stamp>::max();

std::string requirePath(const std::string& name) {
  demand(!defaultStorePath().empty(), "catalogs need SANDBOX_HOME to be set");
  std::string path = catalogPath(name);
  demand(!path.empty(),
         "a catalog's name is not empty, has no \"/\" and does not begin with \".\"");
  return path;
}

OracleCatalog openCatalog(const std::string& name) {
  const std::string path = requirePath(name);
  if (std::filesystem::exists(path)) return OracleCatalog(path);
  throw CommandError("there is no catalog " + inQuotes(name));
}

OracleCatalog createCatalog(const std::string& name, const std::string& user,
                            const std::string& password, CatalogKind kind,
                            std::int64_t rowDelay = 0) {
  const std::filesystem::path path = requirePath(name);
  demand(!user.empty() && !password.empty(), "user and password must not be empty");
  std::filesystem::create_directories(path.parent_path());
  return OracleCatalog::create(path, user, password, kind, rowDelay);
}

void runCatalogAdd(const Arguments& arguments) {
  static constexpr std::string_view kKinds[] = {"recovery", "target", "both"};
  const std::string& name = arguments.positionals()[0];
  const auto kind = std::ranges::find(kKinds, arguments.text("--kind", "recovery"));
  demand(kind != std::end(kKinds), "--kind is none of recovery, target, both");
  createCatalog(name, arguments.text("--user"), arguments.text("--password"),
                static_cast<CatalogKind>(kind - kKinds + 1),
                arguments.number("--row-delay", 0, 0, 60'000));
  std::cout << "catalog " << name << " ready\n";
}

// The text with each "\\xHH" replaced by that byte; nothing if there is a backslash of another
// kind.
std::optional<std::string> unescaped(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] != '\\') {
      result += text[at];
      continue;
    }
    unsigned value = 0;
    const std::string_view digits =
        text.substr(at + 1).starts_with('x') ? text.substr(at + 2, 2) : "";
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
    if (digits.size() != 2 || end != digits.data() + 2) return std::nullopt;
    result += static_cast<char>(value);
    at += 3;
  }
  return result;
}

std::string takePiece(std::span<const std::string_view> fields, bool hasEscapes,
                      PieceWriter& writer) {
  if (fields.size() < 2 || fields.size() > 3) {
    return "has " + std::to_string(fields.size()) + " columns instead of 2 or 3";
  }
  const auto handle = hasEscapes ? unescaped(fields[0]) : std::string(fields[0]);
  if (!handle) return "a backslash is not part of \\xHH";
  if (handle->size() > kMaxHandle) {
    return "a handle has at most " + std::to_string(kMaxHandle) + " bytes";
  }
  const std::optional<Stamp> completed = parseStamp(fields[1]);
  if (!completed) return inQuotes(fields[1]) + " is not a date";
  writer.add(*handle, *completed, fields.size() == 3 ? fields[2] : "A");
  return {};
}

void runCatalogLoad(const Arguments& arguments) {
  OracleCatalog catalog = openCatalog(arguments.positionals()[0]);
  WriteTransaction loading(catalog.database());
  PieceWriter writer(catalog);
  const std::int64_t count = readTable(arguments.positionals()[1], [&](auto fields) {
    return takePiece(fields, arguments.has("--escapes"), writer);
  });
  loading.commit();
  std::cout << count << " backup pieces loaded\n";
}

void runCatalogList(const Arguments& arguments) {
  OracleCatalog catalog = openCatalog(arguments.positionals()[0]);
  PieceReader pieces(catalog, kEarliest, kLatest);
  while (pieces.next()) {
    std::cout << pieces.handle() << '\t' << stampText(pieces.completed()) << '\t' << pieces.status()
              << '\n';
  }
}

Node findOrRegister(Store& store, const std::string& name, const std::string& password) {
  if (!store.findNode(name)) saveNode(store, name, password);
  return requireNode(store, name);
}

std::vector<OracleCatalog> openOrCreate(const std::string& list, const std::string& user,
                                        const std::string& password) {
  std::vector<OracleCatalog> catalogs;
  for (std::string_view item : split(list, ',')) {
    const std::string name(item);
    const bool isThere = std::filesystem::exists(requirePath(name));
    catalogs.push_back(isThere ? openCatalog(name)
                               : createCatalog(name, user, password, CatalogKind::kBoth));
  }
  return catalogs;
}

SiteRequest requestOf(const Arguments& arguments) {
  static constexpr std::int64_t kMostObjects = 100'000'000;
  SiteRequest request;
  request.objects = arguments.number("--objects", 0, 0, kMostObjects);
  request.orphans = arguments.number("--orphans", 0, 0, request.objects);
  request.seed = static_cast<std::uint64_t>(
      arguments.number("--seed", 1, 0, std::numeric_limits<std::int64_t>::max()));
  request.fileSpace = arguments.text("--fs", "/marlorc");
  request.owner = arguments.text("--owner");
  const auto today = parseStamp(arguments.text("--today", stampText(now())));
  demand(today >= Stamp{19750101000000}, "--today is not a date from 1975-01-01 on");
  request.today = *today;
  Object sample;
  sample.fileSpace = request.fileSpace;
  sample.lowLevel = std::string(1, '/');
  sample.owner = request.owner;
  demand(objectNameFault(sample).empty(), objectNameFault(sample));
  return request;
}

void runGenerate(const Arguments& arguments) {
  const SiteRequest request = requestOf(arguments);
  Store store(storePath(arguments));
  const std::string nodeName = arguments.text("--node", "ORANODE");
  const std::string catalogNames = arguments.text("--catalogs", "rcat");
  const Node node = findOrRegister(store, nodeName, arguments.text("--node-password", "secret"));
  std::vector<OracleCatalog> catalogs =
      openOrCreate(catalogNames, arguments.text("--catalog-user", "rman"),
                   arguments.text("--catalog-password", "rman"));
  const SiteSummary summary = generateSite(store, node, catalogs, request);
  std::cout << "generated " << request.objects << " objects of node " << node.name << ", "
            << request.orphans << " orphans, " << summary.pieces << " pieces in catalogs "
            << catalogNames << " (" << summary.inTwoCatalogs << " handles in two), "
            << stampText(summary.first).substr(0, 10) << " to "
            << stampText(summary.last).substr(0, 10) << "\n";
}

constexpr OptionRow kAddOptions[] = {
    {"--user", "NAME", true, "Oracle user"},
    {"--password", "PW", true, "its password"},
    {"--kind", "KIND", false, "recovery, target (control file) or both; default recovery"},
    {"--row-delay", "MS", false, "0 to 60000: how long sqlplus takes over each row"},
};

constexpr OptionRow kLoadOptions[] = {
    {"--escapes", "", false, "\\xHH in a handle is the byte with that number"},
};

constexpr OptionRow kGenerateOptions[] = {
    {"--objects", "N", true, "how many objects to insert"},
    {"--orphans", "K", true, "how many of them no catalog knows"},
    {"--seed", "S", false, "the same seed gives the same site; default 1"},
    {"--today", "DATE", false, "the day of the newest objects, YYYY-MM-DD; default today"},
    {"--node", "NAME", false, "default ORANODE"},
    {"--node-password", "PW", false, "if the node is new; default secret"},
    {"--fs", "NAME", false, "filespace; default /marlorc"},
    {"--owner", "NAME", false, "default: none"},
    {"--catalogs", "LIST", false, "names joined with commas; default rcat"},
    {"--catalog-user", "NAME", false, "if a catalog is new; default rman"},
    {"--catalog-password", "PW", false, "if a catalog is new; default rman"},
};

constexpr CommandRow kCommands[] = {
    {"catalog add", "NAME", 1, 1,
     "make a catalog, or give it a new user, password, kind and delay\n"
     "NAME is the connect identifier; an empty one reaches the catalog \"default\".",
     kAddOptions, runCatalogAdd},
    {"catalog load", "NAME FILE|-", 2, 2,
     "add backup pieces from a tab-separated file\n"
     "Columns: handle (empty: NULL), completion time (YYYY-MM-DD[Thh:mm:ss]), and optionally the\n"
     "status (A by default). Lines that begin with \"#\" are comments. If any line is wrong "
     "nothing is\n"
     "added.",
     kLoadOptions, runCatalogLoad},
    {"catalog list", "NAME", 1, 1,
     "list a catalog's backup pieces: handle, completion time, status", kNoOptions, runCatalogList},
    {"generate", "", 0, 0,
     "make a realistic site: objects, and catalogs that know all but some\n"
     "Makes the node and the catalogs (of kind both) if they are missing, and adds to what is\n"
     "there. Low-level names have the forms that RMAN makes; the high-level name is /oracle.",
     kGenerateOptions, runGenerate},
};

}  // namespace

std::span<const CommandRow> catalogCommands() { return kCommands; }

}  // namespace sandbox
