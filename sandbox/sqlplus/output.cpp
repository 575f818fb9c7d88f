// output.cpp: where sqlplus writes: the terminal and, while spooling, a file.
#include "sandbox/sqlplus/output.h"

#include <algorithm>

#include "sandbox/store/oracle_catalog.h"

namespace sandbox {
namespace {

void put(std::FILE* file, std::string_view text) {
  // A failure is kept in the stream; stopSpool() reports it for the file that matters.
  std::fwrite(text.data(), 1, text.size(), file);
}

std::string csvText(std::string_view value, bool quotes) {
  if (value.empty() || !quotes) return std::string(value);
  std::string text(1, '"');
  for (char c : value) text.append(c == '"' ? 2 : 1, c);
  return text + '"';
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

Overflow Output::overflow() const {
  return settings_.overflow.value_or(settings_.wrap ? Overflow::kWrapped : Overflow::kTruncated);
}

void Output::startRows() {
  const auto wanted = settings_.columnWidth > 0 ? settings_.columnWidth : std::int64_t{kMaxHandle};
  width_ = static_cast<std::size_t>(std::min(wanted, settings_.lineSize));
  linesOnPage_ = 0;
  // Said only if the lines are too short for the column. What COLUMN cuts, it cuts silently.
  if (!settings_.wrap && !settings_.csv && wanted > settings_.lineSize) {
    line("rows will be truncated\n");
  }
}

void Output::startPage() {
  linesOnPage_ = 1;
  line();
  if (!settings_.heading) return;
  if (settings_.csv) return line(csvText(settings_.columnHeading, settings_.csvQuotes));
  linesOnPage_ = 3;
  rowLine(std::string_view(settings_.columnHeading).substr(0, width_));
  rowLine(std::string(width_, '-'));
}

void Output::row(std::string_view value) {
  if (value.empty()) value = settings_.null;
  const bool isPageFull = linesOnPage_ >= settings_.pageSize && !settings_.csv;
  if (settings_.pageSize > 0 && (linesOnPage_ == 0 || isPageFull)) startPage();
  if (settings_.csv) return line(csvText(value, settings_.csvQuotes));
  std::int64_t lines = 0;
  do {
    std::size_t end = language_.bytes(value, width_);
    if (overflow() == Overflow::kWordWrapped && end < value.size()) {
      const std::size_t blank = value.rfind(' ', end);
      if (blank != std::string_view::npos && blank > 0) end = blank;
    }
    rowLine(value.substr(0, end));
    value.remove_prefix(end);
    if (overflow() == Overflow::kWordWrapped && value.starts_with(' ')) value.remove_prefix(1);
    ++lines;
  } while (!value.empty() && overflow() != Overflow::kTruncated);
  linesOnPage_ += lines;
  if (settings_.separator == RecordSeparator::kOff) return;
  if (settings_.separator == RecordSeparator::kWrapped && lines == 1) return;
  rowLine("");
  ++linesOnPage_;
}

void Output::rowLine(std::string_view piece) {
  const std::string_view trimmed = piece.substr(0, piece.find_last_not_of(' ') + 1);
  buffer_.assign(trimmed).push_back('\n');
  if (settings_.terminal) put(stdout, buffer_);
  if (!spool_) return;
  if (!settings_.trimSpool) {
    const auto size = static_cast<std::size_t>(settings_.lineSize);
    buffer_.pop_back();
    buffer_.append(size - std::min(size, language_.characters(trimmed)), ' ').push_back('\n');
  }
  put(spool_.get(), buffer_);
}

}  // namespace sandbox
