// tempdir.h: a directory for one test, and environment variables that are set for a scope.
#ifndef TESTS_SUPPORT_TEMPDIR_H
#define TESTS_SUPPORT_TEMPDIR_H

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace support {

// A new directory, removed with its contents in the end. `enter` makes it the current directory
// until then.
class TempDir {
 public:
  TempDir() : path_((std::filesystem::temp_directory_path() / "vexo-test-XXXXXX").string()) {
    if (::mkdtemp(path_.data()) == nullptr) ADD_FAILURE() << "no temporary directory " << path_;
  }
  ~TempDir() {
    std::error_code ignored;
    if (!back_.empty()) std::filesystem::current_path(back_, ignored);
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  void enter() {
    back_ = std::filesystem::current_path();
    std::filesystem::current_path(path_);
  }
  const std::string& path() const { return path_; }
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }

  // Writes a file, creates the directories above it, and returns its path.
  std::string write(std::string_view name, std::string_view text) const {
    const std::filesystem::path file = path(name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
    return file.string();
  }
  // A file's bytes; empty if it does not exist.
  std::string read(std::string_view name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  bool has(std::string_view name) const { return std::filesystem::exists(path(name)); }

 private:
  std::string path_;
  std::filesystem::path back_;
};

// Sets an environment variable (null: unsets it) until the end of the scope.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    const char* before = std::getenv(name);
    wasSet_ = before != nullptr;
    if (wasSet_) before_ = before;
    set(value);
  }
  ~ScopedEnv() { set(wasSet_ ? before_.c_str() : nullptr); }
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

  void set(const char* value) { value == nullptr ? ::unsetenv(name_) : ::setenv(name_, value, 1); }

 private:
  const char* name_;
  bool wasSet_;
  std::string before_;
};

}  // namespace support

#endif  // TESTS_SUPPORT_TEMPDIR_H
