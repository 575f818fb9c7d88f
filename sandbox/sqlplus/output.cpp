// output.cpp: where sqlplus writes: the terminal and, while spooling, a file.
#include "sandbox/sqlplus/output.h"

#include <algorithm>

namespace sandbox {
namespace {

void put(std::FILE* file, std::string_view text) {
  // A failure stays in the stream; stopSpool() reports it for the file that matters.
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
  if (terminalOn_) put(stdout, buffer_);
  if (spool_) put(spool_.get(), buffer_);
}

void Output::startRows(const Layout& layout, std::string_view heading, std::int64_t columnWidth) {
  layout_ = layout;
  heading_ = heading;
  width_ = static_cast<std::size_t>(std::min(columnWidth, layout.lineSize));
  linesOnPage_ = 0;
}

void Output::startPage() {
  linesOnPage_ = 1;
  line();
  if (!layout_.heading) return;
  linesOnPage_ = 3;
  rowLine(heading_);
  rowLine(std::string(width_, '-'));
}

void Output::row(std::string_view value) {
  if (layout_.pageSize > 0 && (linesOnPage_ == 0 || linesOnPage_ >= layout_.pageSize)) startPage();
  std::int64_t lines = 0;
  do {
    rowLine(value.substr(0, width_));
    value.remove_prefix(std::min(width_, value.size()));
    ++lines;
  } while (!value.empty());
  const bool separated = layout_.separator == RecordSeparator::kEach ||
                         (layout_.separator == RecordSeparator::kWrapped && lines > 1);
  if (separated) rowLine("");
  linesOnPage_ += lines + (separated ? 1 : 0);
}

void Output::rowLine(std::string_view piece) {
  if (terminalOn_) {
    buffer_.assign(piece.substr(0, piece.find_last_not_of(' ') + 1)).push_back('\n');
    put(stdout, buffer_);
  }
  if (!spool_) return;
  buffer_.assign(piece);
  if (!layout_.trimSpool) buffer_.resize(static_cast<std::size_t>(layout_.lineSize), ' ');
  buffer_.push_back('\n');
  put(spool_.get(), buffer_);
}

}  // namespace sandbox
