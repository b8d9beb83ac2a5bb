#include "nuvfile/text_lines.h"

#include <cerrno>
#include <cstring>

#include "nuvfile/content.h"

namespace NuvFile {
namespace {

constexpr size_t kBufferSize = size_t{256} * 1024;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

TextLines::TextLines(FileHandle owned, std::FILE* file)
    : owned_(std::move(owned)), file_(file), buffer_(kBufferSize) {}

Status TextLines::Open(const std::string& path, std::unique_ptr<TextLines>* lines) {
  if (path == "-") {
    lines->reset(new TextLines(nullptr, stdin));
    return {};
  }
  FileHandle file(std::fopen(path.c_str(), "rb"));
  if (!file) return {Fault::kCannotOpen, "cannot open '" + path + "': " + SystemErrorText(errno)};
  std::FILE* raw = file.get();
  lines->reset(new TextLines(std::move(file), raw));
  return {};
}

bool TextLines::Next(std::string_view* line, Status* error) {
  line_.clear();
  if (!TakeLine(error)) return false;
  ++lineNumber_;
  if (lineNumber_ == 1 && line_.compare(0, kByteOrderMark.size(), kByteOrderMark) == 0) {
    *error = {Fault::kBadText,
              "the text begins with a byte-order mark: save it as UTF-8 without one"};
    return false;
  }
  *line = line_;
  return true;
}

// Collects one line into line_, without its end. False at the end of the text.
bool TextLines::TakeLine(Status* error) {
  bool any = false;
  for (;;) {
    if (begin_ == end_ && !Refill(error)) return error->Ok() && any;
    any = true;
    const char* from = &buffer_[begin_];
    const auto* end = static_cast<const char*>(std::memchr(from, '\n', end_ - begin_));
    const size_t length = end != nullptr ? static_cast<size_t>(end - from) : end_ - begin_;
    // One byte more for the CR that is dropped below.
    if (line_.size() + length > kMaxLineLength + 1) {
      *error = {Fault::kTooLarge, "data line " + std::to_string(lineNumber_ + 1) +
                                      ": expected at most " + std::to_string(kMaxLineLength) +
                                      " bytes, found more"};
      return false;
    }
    line_.append(from, length);
    begin_ += length;
    if (end == nullptr) continue;
    ++begin_;
    if (!line_.empty() && line_.back() == '\r') line_.pop_back();
    return true;
  }
}

bool TextLines::Refill(Status* error) {
  begin_ = 0;
  end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
  if (end_ != 0) return true;
  if (std::ferror(file_) != 0) {
    *error = {Fault::kReadFailed, "reading the data lines failed: " + SystemErrorText(errno)};
  }
  return false;
}

}  // namespace NuvFile
