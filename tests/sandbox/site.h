// site.h: a sandbox of its own for each test, and a client of its storage server.
#ifndef TESTS_SANDBOX_SITE_H
#define TESTS_SANDBOX_SITE_H

#include <string>
#include <string_view>
#include <vector>

#include "api/vltlib.h"

// A directory under the system's temporary one, removed at the end; SANDBOX_HOME points at it.
class Site {
 public:
  Site();
  ~Site();
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;

  std::string path(const std::string& name) const { return directory_ + "/" + name; }
  // Returns the file's path.
  std::string write(const std::string& name, std::string_view content) const;
  std::string read(const std::string& name) const;

  struct Result {
    int status;
    std::string output, errors;
  };

  // Runs a command of the shell; the site's directory is its working directory.
  Result run(const std::string& command) const;
  // The same for the admin tool, which must succeed; returns its output.
  std::string zylstore(const std::string& arguments) const;
  Result tryZylstore(const std::string& arguments) const;

  // A store with the node ORANODE, password "secret".
  void makeStore() const;

 private:
  std::string directory_;
};

// The client library set up for one site; cleaned up at the end.
class Client {
 public:
  explicit Client(const Site& site, std::string_view options = "");
  ~Client() { vltCleanUp(VLT_MULTITHREAD); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // The code of the set-up.
  int16_t rc = 0;
};

// Arguments of a logon; what a test does not set is as a correct program passes it.
struct Logon {
  const char* node = "ORANODE";
  const char* password = "secret";
  const char* options = nullptr;
  const char* owner = nullptr;

  // Returns the code and fills the handle.
  int16_t operator()(uint32_t& handle) const;
};

// A session that must succeed.
uint32_t logOn(const Logon& logon = {});

// Arguments of a query, all active objects of /marlorc by default.
struct Query {
  const char* fileSpace = "/marlorc";
  const char* highLevel = "/*";
  const char* lowLevel = "/*";
  const char* owner = nullptr;
  uint8_t state = VLT_STATE_ACTIVE;
  VltDate bound = {};

  int16_t begin(uint32_t handle) const;
};

// One step of an open query: the code, and with VLT_RC_MORE_DATA the object.
int16_t nextObject(uint32_t handle, VltQryRespBackup& object);

// The low-level names of a query's objects in their order, joined with blanks, then the code that
// ended it in brackets; an object that cannot be shown is "?".
std::string namesOf(uint32_t handle, const Query& query = {});

// Names one object for deletion within the open transaction.
int16_t deleteObject(uint32_t handle, int64_t id);

#endif  // TESTS_SANDBOX_SITE_H
