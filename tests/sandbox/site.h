// site.h: a sandbox of its own for each test, and a client of its storage server.
#ifndef TESTS_SANDBOX_SITE_H
#define TESTS_SANDBOX_SITE_H

#include <sys/wait.h>

#include <cstdio>

#include "api/vltlib.h"
#include "tests/support/tempdir.h"

// A directory of the test's own; SANDBOX_HOME points at it.
class Site : public testing::Test {
 protected:
  struct Result {
    int status;
    std::string output;
  };

  Site() { setenv("SANDBOX_HOME", dir_.path().c_str(), 1); }

  // Runs a command of the shell in the site's directory; what it says on either stream is output.
  Result run(const std::string& command) const {
    const int status = std::system(
        ("cd '" + dir_.path() + "' && { " + command + "\n} >.out 2>&1 </dev/null").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, dir_.read(".out")};
  }

  // Runs the admin tool, which must succeed; returns its output.
  std::string zylstore(const std::string& arguments) const {
    const Result result = run("'" ZYLSTORE "' " + arguments);
    EXPECT_EQ(result.status, 0) << arguments << ": " << result.output;
    return result.output;
  }

  support::TempDir dir_;
};

// Arguments of a logon; what a test does not set is as a correct program passes it.
struct Logon {
  const char* node = "ORANODE";
  const char* password = "secret";
  const char* options = nullptr;

  // Returns the code and fills the handle.
  int16_t operator()(uint32_t& handle) const {
    VltApiVersionEx version = {2, 8, 1, 13, 0};
    VltInitExIn in = {};
    in.structVersion = 5;
    in.apiVersion = &version;
    in.clientNodeName = node;
    in.clientPassword = password;
    in.options = options;
    in.clientKind = VLT_CLIENT_KIND_DATABASE_AGENT;
    return vltInitEx(&handle, &in, nullptr);
  }
};

// Arguments of a query, all active objects of /marlorc by default.
struct Query {
  const char* fileSpace = "/marlorc";
  const char* highLevel = "/*";
  const char* lowLevel = "/*";
  const char* owner = nullptr;
  uint8_t state = VLT_STATE_ACTIVE;
  VltDate bound = {};

  int16_t begin(uint32_t handle) const {
    VltObjName name = {};
    std::snprintf(name.fileSpace, sizeof name.fileSpace, "%s", fileSpace);
    std::snprintf(name.highLevel, sizeof name.highLevel, "%s", highLevel);
    std::snprintf(name.lowLevel, sizeof name.lowLevel, "%s", lowLevel);
    name.objType = VLT_OBJTYPE_FILE;
    const VltQueryBackup query = {2, &name, owner, state, bound};
    return vltBeginQuery(handle, VLT_QUERY_BACKUP, &query);
  }
};

// A site with a store, the node ORANODE (password "secret") and the client library set up.
class Store : public Site {
 protected:
  Store() {
    zylstore("init");
    zylstore("node ORANODE --password secret");
    EXPECT_EQ(setUp(), VLT_RC_OK);
  }
  ~Store() override { vltCleanUp(VLT_MULTITHREAD); }

  // Ends what is open and sets the library up again.
  static int16_t setUp() {
    vltCleanUp(VLT_MULTITHREAD);
    VltEnvSetUp in = {};
    in.structVersion = 4;
    return vltSetUp(VLT_MULTITHREAD, &in);
  }

  // A session that must succeed.
  static uint32_t logOn(const Logon& logon = {}) {
    uint32_t handle = 0;
    EXPECT_EQ(logon(handle), VLT_RC_OK);
    return handle;
  }

  // One step of an open query: the code, and with VLT_RC_MORE_DATA the object.
  static int16_t next(uint32_t handle, VltQryRespBackup& object) {
    object.structVersion = 8;
    VltDataBlk block = {3, sizeof object, 0, &object};
    return vltGetNextQObj(handle, &block);
  }

  // The low-level names that a query finds, in its order, then the code that ended it in brackets;
  // an object that cannot be shown is "?".
  static std::string found(uint32_t handle, const Query& query = {}) {
    std::string names;
    EXPECT_EQ(query.begin(handle), VLT_RC_OK);
    VltQryRespBackup object;
    int16_t rc = next(handle, object);
    for (; rc == VLT_RC_MORE_DATA || rc == VLT_RC_UNKNOWN_FORMAT; rc = next(handle, object))
      names += rc == VLT_RC_MORE_DATA ? std::string(object.objName.lowLevel) + " " : "? ";
    EXPECT_EQ(vltEndQuery(handle), VLT_RC_OK);
    return names + "[" + std::to_string(rc) + "]";
  }

  // Names one object for deletion within the open transaction.
  static int16_t remove(uint32_t handle, int64_t id) {
    const VltDelInfo info = {
        1, {static_cast<uint32_t>(id >> 32), static_cast<uint32_t>(id & 0xFFFFFFFF)}};
    return vltDeleteObj(handle, VLT_DELETE_BACKUP_ID, &info);
  }
};

#endif  // TESTS_SANDBOX_SITE_H
