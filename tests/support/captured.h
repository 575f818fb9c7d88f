// captured.h: what a piece of code writes to standard output or error, and what it reads.
#ifndef TESTS_SUPPORT_CAPTURED_H
#define TESTS_SUPPORT_CAPTURED_H

#include <gtest/gtest.h>
#include <stdio_ext.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace support {

// Collects what is written to a descriptor, from construction until `take` or the destructor.
class Captured {
 public:
  explicit Captured(int descriptor = STDOUT_FILENO)
      : descriptor_(descriptor), file_(std::tmpfile()) {
    std::fflush(nullptr);
    saved_ = ::dup(descriptor_);
    if (file_ == nullptr || ::dup2(::fileno(file_), descriptor_) < 0) {
      ADD_FAILURE() << "descriptor " << descriptor_ << " cannot be captured";
    }
  }
  ~Captured() {
    end();
    if (file_ != nullptr) std::fclose(file_);
  }
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;

  std::string take() {
    end();
    std::string text;
    std::rewind(file_);
    for (int c = std::getc(file_); c != EOF; c = std::getc(file_)) text += static_cast<char>(c);
    return text;
  }

 private:
  void end() {
    std::fflush(nullptr);
    if (saved_ < 0) return;
    ::dup2(saved_, descriptor_);
    ::close(saved_);
    saved_ = -1;
  }

  int descriptor_;
  std::FILE* file_;
  int saved_ = -1;
};

// Makes `text` (at most what a pipe holds) standard input, and its end the end of input.
class FedInput {
 public:
  explicit FedInput(std::string_view text) : saved_(::dup(STDIN_FILENO)) {
    int ends[2] = {-1, -1};
    const bool fed = ::pipe(ends) == 0 && ::dup2(ends[0], STDIN_FILENO) >= 0 &&
                     ::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (!fed) ADD_FAILURE() << "standard input cannot be fed";
    ::close(ends[0]);
    ::close(ends[1]);
    forget();
  }
  ~FedInput() {
    ::dup2(saved_, STDIN_FILENO);
    ::close(saved_);
    forget();
  }
  FedInput(const FedInput&) = delete;
  FedInput& operator=(const FedInput&) = delete;

 private:
  static void forget() {
    ::__fpurge(stdin);
    std::clearerr(stdin);
  }

  int saved_;
};

}  // namespace support

#endif  // TESTS_SUPPORT_CAPTURED_H
