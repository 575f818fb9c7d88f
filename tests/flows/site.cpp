// site.cpp: a small site for one test, see site.h.
#include "tests/flows/site.h"

#include <cstdio>
#include <sstream>

namespace {

constexpr char kBuild[] = BUILD_DIRECTORY;

}  // namespace

Site::Site() {
  const std::string build = kBuild;
  settings_.rows = 30;
  settings_.columns = 100;
  settings_.environment = {
      {"SANDBOX_HOME", dir_.path()},
      {"VEXO_OPTFILE", dir_.path("vexo.opt")},
      {"PATH", build + "/bin:" + build + "/bin/sandbox:" + std::getenv("PATH")},
      {"LD_LIBRARY_PATH", build + "/lib"},
      {"TMPDIR", dir_.path("tmp")},
      {"TERM", "ansi"}};
  settings_.unset = {"VLTI_DIR",    "VLTI_LOG",    "VLTI_CONFIG", "NLS_LANG",
                     "ORACLE_HOME", "ORACLE_PATH", "SQLPATH"};
  settings_.directory = dir_.path();
  dir_.write("tmp/.keep", "");
  dir_.write("vlt.opt", "STORE " + dir_.path("store.db") + "\n");
  option("VLTI_ORC_CONFIG " + dir_.path("vlt.opt"));
  option("VLTI_LOG " + dir_.path());
  option("VEXO_NODE ORANODE");
  option("VEXO_PSWDPATH " + dir_.path("passwords"));
  zylstore("init");
  zylstore("node ORANODE --password secret --save-password " + dir_.path("passwords"));
}

std::string Site::zylstore(const std::string& arguments) const {
  const std::string command =
      "SANDBOX_HOME=" + dir_.path() + " " + kBuild + "/bin/zylstore " + arguments + " 2>&1";
  std::FILE* pipe = ::popen(command.c_str(), "r");
  std::string output;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) output += static_cast<char>(c);
  EXPECT_EQ(0, ::pclose(pipe)) << command << "\n" << output;
  return output;
}

void Site::object(const std::string& lowLevel, const std::string& more) const {
  zylstore("put --node ORANODE --fs /marlorc --ll " + lowLevel + " " + more);
}

void Site::catalog(const std::string& name, const std::vector<std::string>& handles,
                   const std::string& kind) const {
  zylstore("catalog add " + name + " --user rman --password rman --kind " + kind);
  std::string lines;
  for (const std::string& handle : handles) lines += handle + "\t2026-03-07T08:05:09\n";
  zylstore("catalog load " + name + " " + dir_.write("tmp/" + name, lines));
  std::filesystem::remove(dir_.path("tmp/" + name));
}

std::string Site::stored() const {
  std::istringstream list(zylstore("list"));
  std::string names;
  for (std::string line; std::getline(list, line);) {
    std::istringstream fields(line);
    std::string field;
    for (int column = 0; column < 7; ++column) std::getline(fields, field, '\t');
    names += (names.empty() ? "" : " ") + field;
  }
  return names;
}

void Site::option(const std::string& line) {
  dir_.write("vexo.opt", dir_.read("vexo.opt") + line + "\n");
}

void Site::run(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), std::string(kBuild) + "/bin/vexosync");
  terminal_ = std::make_unique<sandbox::Terminal>(arguments, settings_);
}

void Site::shell(const std::string& command) {
  terminal_ = std::make_unique<sandbox::Terminal>(
      std::vector<std::string>{"/bin/sh", "-c", command}, settings_);
}

void Site::replaceSqlplus(const std::string& script) {
  std::filesystem::permissions(dir_.write("bin/sqlplus", script),
                               std::filesystem::perms::owner_all);
  settings_.environment["PATH"] = dir_.path("bin") + ":" + settings_.environment["PATH"];
}

void Site::see(const std::string& text) {
  ASSERT_TRUE(terminal_->expect(text)) << "no '" << text << "' in\n" << terminal_->transcript();
}

void Site::answer(const std::string& prompt, const std::string& text) {
  ASSERT_NO_FATAL_FAILURE(see(prompt));
  terminal_->send(text + "\n");
}

void Site::secret(const std::string& prompt, const std::string& text) {
  ASSERT_NO_FATAL_FAILURE(see(prompt));
  ASSERT_TRUE(terminal_->expectEchoOff());
  terminal_->send(text + "\n");
}

void Site::dates(const std::string& start, const std::string& end) {
  answer("Start date", start);
  answer("End date", end);
}

void Site::logon(const std::string& connect, const std::string& password) {
  answer("user name: ", "rman");
  secret("password: ", password);
  answer("connect string", connect);
}

void Site::syncdb(const std::string& connect, const std::string& password) {
  run({"syncdb"});
  dates();
  logon(connect, password);
}

void Site::ends(int code) {
  const std::optional<int> status = terminal_->wait();
  ASSERT_TRUE(status.has_value()) << "still running:\n" << terminal_->transcript();
  EXPECT_EQ(code & 0xff, *status) << terminal_->transcript();
}

int Site::countIn(const std::string& all, const std::string& text) {
  int found = 0;
  for (std::size_t at = all.find(text); at != all.npos; at = all.find(text, at + 1)) ++found;
  return found;
}
