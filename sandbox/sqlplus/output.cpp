// output.cpp: where sqlplus writes: the terminal and, while spooling, a file.
#include "sandbox/sqlplus/output.h"

#include <algorithm>

namespace sandbox {
namespace {

void put(std::FILE* file, std::string_view text) {
  // A failure is kept in the stream; stopSpool() reports it for the file that matters.
  std::fwrite(text.data(), 1, text.size(), file);
}

}  // namespace

bool Output::startSpool(const std::string& path) {
  stopSpool();
  spool_.reset(std::fopen(path.c_str(), "w"));
  return spool_ != nullptr;
}

bool Output::stopSpool() {
  if (!spool_) return true;
  const bool written = std::ferror(spool_.get()) == 0;
  const bool closed = std::fclose(spool_.release()) == 0;
  return written && closed;
}

void Output::line(std::string_view text) {
  buffer_.assign(text).push_back('\n');
  if (settings_.terminal) put(stdout, buffer_);
  if (spool_) put(spool_.get(), buffer_);
}

void Output::startPage() {
  linesOnPage_ = 1;
  line();
  if (!settings_.heading) return;
  linesOnPage_ = 3;
  rowLine("HANDLE");
  rowLine(std::string(static_cast<std::size_t>(settings_.lineSize), '-'));
}

void Output::row(std::string_view value) {
  const auto width = static_cast<std::size_t>(settings_.lineSize);
  const bool isFull = linesOnPage_ == 0 || linesOnPage_ >= settings_.pageSize;
  if (settings_.pageSize > 0 && isFull) startPage();
  std::int64_t lines = 0;
  do {
    rowLine(value.substr(0, width));
    value.remove_prefix(std::min(width, value.size()));
    ++lines;
  } while (!value.empty());
  linesOnPage_ += lines;
  if (settings_.separator == RecordSeparator::kOff) return;
  if (settings_.separator == RecordSeparator::kWrapped && lines == 1) return;
  rowLine("");
  ++linesOnPage_;
}

void Output::rowLine(std::string_view piece) {
  if (settings_.terminal) {
    buffer_.assign(piece.substr(0, piece.find_last_not_of(' ') + 1)).push_back('\n');
    put(stdout, buffer_);
  }
  if (!spool_) return;
  buffer_.assign(piece);
  if (!settings_.trimSpool) buffer_.resize(static_cast<std::size_t>(settings_.lineSize), ' ');
  buffer_.push_back('\n');
  put(spool_.get(), buffer_);
}

}  // namespace sandbox
