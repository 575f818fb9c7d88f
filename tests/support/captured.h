// captured.h: what a piece of code writes to standard output or error, and what it reads.
#ifndef TESTS_SUPPORT_CAPTURED_H
#define TESTS_SUPPORT_CAPTURED_H

#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <regex>

#define EXPECT_HOLDS(text, part) EXPECT_NE(std::string::npos, (text).find(part)) << (text)

namespace support {

// The text with "#" instead of every run of digits, for lines with times and process numbers.
inline std::string masked(const std::string& text) {
  return std::regex_replace(text, std::regex("[0-9]+"), "#");
}

// How often a part is found in a text.
inline unsigned occurrences(const std::string& text, std::string_view part) {
  unsigned count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++count;
  return count;
}

// Redirects a descriptor to an unnamed file until `end` or the destructor.
class Redirected {
 public:
  explicit Redirected(int descriptor) : descriptor_(descriptor), saved_(::dup(descriptor)) {
    std::fflush(nullptr);
    EXPECT_GE(::dup2(::fileno(file_), descriptor_), 0);
  }
  ~Redirected() {
    end();
    std::fclose(file_);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;

 protected:
  void end() {
    std::fflush(nullptr);
    if (saved_ < 0) return;
    ::dup2(saved_, descriptor_);
    ::close(saved_);
    saved_ = -1;
  }
  std::FILE* file_ = std::tmpfile();

 private:
  int descriptor_, saved_;
};

// Collects what is written to a descriptor, from construction until `take` or the destructor.
class Captured : public Redirected {
 public:
  explicit Captured(int descriptor = STDOUT_FILENO) : Redirected(descriptor) {}
  std::string take() {
    end();
    std::string text;
    std::rewind(file_);
    for (int c = std::getc(file_); c != EOF; c = std::getc(file_)) text += static_cast<char>(c);
    return text;
  }
};

// Makes `text` the whole of standard input.
class FedInput : public Redirected {
 public:
  explicit FedInput(std::string_view text) : Redirected(STDIN_FILENO) {
    std::setvbuf(file_, nullptr, _IONBF, 0);  // no copy of a password
    std::fwrite(text.data(), 1, text.size(), file_);
    std::rewind(file_);
    ::__fpurge(stdin);
    std::clearerr(stdin);
  }
  ~FedInput() { ::__fpurge(stdin); }
};

}  // namespace support

#endif  // TESTS_SUPPORT_CAPTURED_H
