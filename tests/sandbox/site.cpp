// site.cpp: a sandbox of its own for each test, and a client of its storage server.
#include "tests/sandbox/site.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

Site::Site() {
  std::string name = std::filesystem::temp_directory_path().string() + "/sandbox-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) ADD_FAILURE() << "no temporary directory";
  directory_ = name;
  setenv("SANDBOX_HOME", name.c_str(), 1);
}

Site::~Site() { std::filesystem::remove_all(directory_); }

std::string Site::write(const std::string& name, std::string_view content) const {
  std::ofstream(path(name), std::ios::binary) << content;
  return path(name);
}

std::string Site::read(const std::string& name) const {
  std::ifstream file(path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Site::Result Site::run(const std::string& command) const {
  const int status = std::system(
      ("cd '" + directory_ + "' && { " + command + "\n} >.out 2>.err </dev/null").c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read(".out"), read(".err")};
}

Site::Result Site::tryZylstore(const std::string& arguments) const {
  return run("'" ZYLSTORE "' " + arguments);
}

std::string Site::zylstore(const std::string& arguments) const {
  const Result result = tryZylstore(arguments);
  EXPECT_EQ(result.status, 0) << arguments << ": " << result.errors;
  return result.output;
}

void Site::makeStore() const {
  zylstore("init");
  zylstore("node ORANODE --password secret");
}

Client::Client(const Site& site, std::string_view options) {
  VltEnvSetUp setUp = {};
  setUp.structVersion = 4;
  if (!options.empty())
    std::snprintf(setUp.vltiConfig, sizeof setUp.vltiConfig, "%s",
                  site.write("client.opt", options).c_str());
  rc = vltSetUp(VLT_MULTITHREAD, &setUp);
}

int16_t Logon::operator()(uint32_t& handle) const {
  VltApiVersionEx version = {2, 8, 1, 13, 0};
  VltInitExIn in = {};
  in.structVersion = 5;
  in.apiVersion = &version;
  in.clientNodeName = node;
  in.clientOwnerName = owner;
  in.clientPassword = password;
  in.options = options;
  in.clientKind = VLT_CLIENT_KIND_DATABASE_AGENT;
  return vltInitEx(&handle, &in, nullptr);
}

uint32_t logOn(const Logon& logon) {
  uint32_t handle = 0;
  EXPECT_EQ(logon(handle), VLT_RC_OK);
  return handle;
}

int16_t Query::begin(uint32_t handle) const {
  VltObjName name = {};
  std::snprintf(name.fileSpace, sizeof name.fileSpace, "%s", fileSpace);
  std::snprintf(name.highLevel, sizeof name.highLevel, "%s", highLevel);
  std::snprintf(name.lowLevel, sizeof name.lowLevel, "%s", lowLevel);
  name.objType = VLT_OBJTYPE_FILE;
  const VltQueryBackup query = {2, &name, owner, state, bound};
  return vltBeginQuery(handle, VLT_QUERY_BACKUP, &query);
}

int16_t nextObject(uint32_t handle, VltQryRespBackup& object) {
  object.structVersion = 8;
  VltDataBlk block = {3, sizeof object, 0, &object};
  return vltGetNextQObj(handle, &block);
}

std::string namesOf(uint32_t handle, const Query& query) {
  std::string names;
  int16_t rc = query.begin(handle);
  if (rc != VLT_RC_OK) return "begin " + std::to_string(rc);
  VltQryRespBackup object;
  for (;;) {
    rc = nextObject(handle, object);
    if (rc == VLT_RC_UNKNOWN_FORMAT)
      names += "? ";
    else if (rc == VLT_RC_MORE_DATA)
      names.append(object.objName.lowLevel).append(" ");
    else
      break;
  }
  EXPECT_EQ(vltEndQuery(handle), VLT_RC_OK);
  return names + "[" + std::to_string(rc) + "]";
}

int16_t deleteObject(uint32_t handle, int64_t id) {
  const VltDelInfo info = {
      1, {static_cast<uint32_t>(id >> 32), static_cast<uint32_t>(id & 0xFFFFFFFF)}};
  return vltDeleteObj(handle, VLT_DELETE_BACKUP_ID, &info);
}
