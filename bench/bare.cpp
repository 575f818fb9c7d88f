// bare.cpp: the smallest program that does the work of a whole run, linked to the client library.
//
// Usage: bench_bare query                     reads all objects of the node and drops them
//        bench_bare sync HANDLES EXPECTED     the same without the handles in a file, one on each
//                                             line; EXPECTED objects must be left
//        bench_bare delete EXPECTED           deletes all EXPECTED objects of the node, 255 in each
//                                             transaction
//
// It calls the library as vexosync does, in the same order. Apart from that there is a std::set and
// nothing else: no messages, no options, no list.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "api/vltlib.h"

namespace {

constexpr std::size_t kTransaction = 255;

void check(int rc, int expected, const char* what) {
  if (rc == expected) return;
  std::fprintf(stderr, "bench_bare: %s gave %d\n", what, rc);
  std::exit(1);
}

std::uint64_t toNumber(const VltWord64& word) {
  return (static_cast<std::uint64_t>(word.hi) << 32) + word.lo;
}

class Session {
 public:
  Session() {
    const std::string options = std::string(std::getenv("SANDBOX_HOME")) + "/vlt.opt";
    VltEnvSetUp setUp = {};
    setUp.structVersion = 4;
    std::snprintf(setUp.vltiConfig, sizeof setUp.vltiConfig, "%s", options.c_str());
    check(vltSetUp(VLT_MULTITHREAD, &setUp), VLT_RC_OK, "vltSetUp");
    const VltApiVersionEx caller = {2, 8, 1, 13, 0};
    VltInitExIn in = {};
    in.structVersion = 5;
    in.apiVersion = &caller;
    in.clientNodeName = "ORANODE";
    in.clientPassword = "secret";
    in.applicationType = "bench";
    in.configFile = options.c_str();
    in.clientKind = VLT_CLIENT_KIND_DATABASE_AGENT;
    VltInitExOut out = {};
    out.structVersion = 1;
    check(vltInitEx(&handle_, &in, &out), VLT_RC_OK, "vltInitEx");
  }
  ~Session() {
    vltTerminate(handle_);
    vltCleanUp(VLT_MULTITHREAD);
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Calls `take` for every active object of the node.
  template <typename Take>
  void query(Take take) {
    VltObjName name = {};
    std::strcpy(name.fileSpace, "/marlorc");
    std::strcpy(name.highLevel, "/*");
    std::strcpy(name.lowLevel, "/*");
    name.objType = VLT_OBJTYPE_FILE;
    VltQueryBackup query = {};
    query.structVersion = 2;
    query.objName = &name;
    query.owner = "";
    query.objState = VLT_STATE_ACTIVE;
    check(vltBeginQuery(handle_, VLT_QUERY_BACKUP, &query), VLT_RC_OK, "vltBeginQuery");
    static VltQryRespBackup response;
    response.structVersion = 8;
    VltDataBlk block = {3, sizeof response, 0, &response};
    std::int16_t rc = vltGetNextQObj(handle_, &block);
    for (; rc == VLT_RC_MORE_DATA; rc = vltGetNextQObj(handle_, &block)) take(response);
    check(rc, VLT_RC_FINISHED, "vltGetNextQObj");
    check(vltEndQuery(handle_), VLT_RC_OK, "vltEndQuery");
  }

  void erase(const std::vector<VltWord64>& objects) {
    for (std::size_t i = 0; i < objects.size();) {
      check(vltBeginTxn(handle_), VLT_RC_OK, "vltBeginTxn");
      const std::size_t end = i + kTransaction < objects.size() ? i + kTransaction : objects.size();
      for (; i < end; ++i) {
        const VltDelInfo info = {1, objects[i]};
        check(vltDeleteObj(handle_, VLT_DELETE_BACKUP_ID, &info), VLT_RC_OK, "vltDeleteObj");
      }
      std::uint16_t reason = 0;
      check(vltEndTxn(handle_, VLT_VOTE_COMMIT, &reason), VLT_RC_OK, "vltEndTxn");
    }
  }

 private:
  std::uint32_t handle_ = 0;
};

// Each returns the number of objects that it read, kept or deleted.

std::size_t runQuery() {
  Session session;
  std::uint64_t sum = 0;
  std::size_t count = 0;
  session.query([&](const VltQryRespBackup& object) {
    sum += toNumber(object.objId);
    ++count;
  });
  return sum == 0 ? 0 : count;
}

std::size_t runSync(const char* path) {
  std::set<std::string> known;
  std::FILE* file = std::fopen(path, "r");
  char line[1024];
  while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr) {
    line[std::strcspn(line, "\n")] = '\0';
    known.emplace(line);
  }
  if (file != nullptr) std::fclose(file);
  Session session;
  std::vector<VltQryRespBackup> orphans;
  session.query([&](const VltQryRespBackup& object) {
    const char* name = object.objName.lowLevel;
    if (!known.contains(name + (*name == '/' ? 1 : 0))) orphans.push_back(object);
  });
  return orphans.size();
}

std::size_t runDelete() {
  Session session;
  std::vector<VltWord64> objects;
  session.query([&](const VltQryRespBackup& object) { objects.push_back(object.objId); });
  session.erase(objects);
  return objects.size();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string command = argc > 1 ? argv[1] : "";
  if (command == "query") return runQuery() > 0 ? 0 : 1;
  if (argc < 3) return 2;
  const std::size_t count = command == "sync" ? runSync(argv[2]) : runDelete();
  if (std::to_string(count) == argv[argc - 1]) return 0;
  std::fprintf(stderr, "bench_bare: %zu objects instead of %s\n", count, argv[argc - 1]);
  return 1;
}
