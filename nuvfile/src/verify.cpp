#include "verify.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "header.h"
#include "nuvfile/content.h"

namespace NuvFile {
namespace {

// Large enough that the cost of a read call vanishes, small enough for the second-level
// cache, where the checksum and the search for line ends find the bytes again.
constexpr size_t kChunkSize = size_t{256} * 1024;
constexpr size_t kIndexChunkSize = size_t{64} * 1024;
static_assert(kIndexChunkSize % kIndexEntrySize == 0, "entries must not straddle chunks");

std::string_view AsText(const uint8_t* bytes, size_t length) {
  return {reinterpret_cast<const char*>(bytes), length};
}

// `visit(position, bytes, size, ahead)` is called for each chunk; `ahead` - `size` bytes
// (one, or none at the end) of the next chunk follow the chunk's own in `bytes`.
using VisitChunk =
    std::function<Status(uint64_t position, const uint8_t* bytes, size_t size, size_t ahead)>;

// Streams one section, comparing its checksum. The fault of `visit` is returned only
// when the checksum is right; after a fault `visit` is not called again.
Status ScanSection(ByteSource& source, const Layout& layout, Section section,
                   const VisitChunk& visit) {
  const SectionEntry& entry = layout.At(section);
  std::vector<uint8_t> buffer(
      static_cast<size_t>(std::min<uint64_t>(kChunkSize + 1, entry.length)));
  uint32_t checksum = 0;
  Status content;
  for (uint64_t position = 0; position < entry.length; position += kChunkSize) {
    const uint64_t left = entry.length - position;
    const auto size = static_cast<size_t>(std::min<uint64_t>(kChunkSize, left));
    const auto ahead = static_cast<size_t>(std::min<uint64_t>(kChunkSize + 1, left));
    Status status = source.ReadAt(entry.offset + position, buffer.data(), ahead);
    if (!status.Ok()) return SectionFault(status.GetFault(), section, status.Message());
    checksum = UpdateChecksum(checksum, buffer.data(), size);
    if (visit && content.Ok()) content = visit(position, buffer.data(), size, ahead);
  }
  if (checksum != entry.checksum) {
    char text[64];
    std::snprintf(text, sizeof(text), "its checksum is 0x%08x, its bytes give 0x%08x",
                  static_cast<unsigned>(entry.checksum), static_cast<unsigned>(checksum));
    return SectionFault(Fault::kBadChecksum, section, text);
  }
  return content;
}

// Entries must not decrease, must stay inside the data and must end where the data ends.
class IndexCheck {
 public:
  explicit IndexCheck(const Layout& layout) : layout_(layout) {}

  Status Visit(const uint8_t* bytes, size_t size) {
    for (size_t i = 0; i < size; i += kIndexEntrySize, ++number_) {
      const uint64_t entry = LoadU64(bytes + i);
      const uint64_t dataLength = layout_.At(Section::kData).length;
      if (number_ == 0 && entry != 0) return Wrong("expected 0", entry);
      if (entry < previous_) {
        return Wrong("expected at least the " + std::to_string(previous_) + " before it", entry);
      }
      if (entry > dataLength || (number_ == layout_.lineCount && entry != dataLength)) {
        return Wrong((number_ == layout_.lineCount ? "expected the length of the data, "
                                                   : "expected at most the length of the data, ") +
                         std::to_string(dataLength),
                     entry);
      }
      if (entry - previous_ > kMaxLineLength) {
        return Wrong("expected a line of at most " + std::to_string(kMaxLineLength) + " bytes",
                     entry);
      }
      previous_ = entry;
    }
    return {};
  }

 private:
  Status Wrong(const std::string& expected, uint64_t found) const {
    return SectionFault(
        Fault::kBadIndex, Section::kIndex,
        "entry " + std::to_string(number_) + ": " + expected + ", found " + std::to_string(found));
  }

  const Layout& layout_;
  uint64_t number_ = 0;
  uint64_t previous_ = 0;
};

// Walks the lines along with the chunks of the data. The rules are those of
// CheckDataLine; they are applied to whole chunks because a call per line would take
// longer than the checksum.
class DataCheck {
 public:
  DataCheck(ByteSource& source, const Layout& layout)
      : index_(source, layout.At(Section::kIndex)), linesLeft_(layout.lineCount) {}

  // Takes the start of the first line.
  Status Begin() { return index_.Next(&next_); }

  Status Visit(uint64_t position, const uint8_t* bytes, size_t size, size_t ahead) {
    const size_t bad = FindLineEnd(bytes, size);
    const uint64_t until = position + (bad < size ? bad + 1 : size);
    while (linesLeft_ > 0 && next_ < until) {
      const uint64_t begin = next_;
      if (Status status = index_.Next(&next_); !status.Ok()) return status;
      --linesLeft_;
      ++number_;
      const auto at = static_cast<size_t>(begin - position);
      // The first two bytes decide; the second may be the one from the next chunk.
      const auto known = static_cast<size_t>(
          std::min({next_ - begin, static_cast<uint64_t>(ahead - at), uint64_t{2}}));
      if (bytes[at] != 'F') continue;
      if (Status status = CheckDataLine(number_, AsText(bytes + at, known)); !status.Ok()) {
        return status;
      }
    }
    if (bad == size) return {};
    return {Fault::kBadLine, "data line " + std::to_string(number_) +
                                 ": expected no line end inside the line, found " +
                                 (bytes[bad] == '\r' ? "CR" : "LF")};
  }

 private:
  // Position of the first CR or LF, or `size`.
  static size_t FindLineEnd(const uint8_t* bytes, size_t size) {
    const std::string_view text = AsText(bytes, size);
    return std::min({text.find('\r'), text.find('\n'), size});
  }

  IndexCursor index_;
  uint64_t linesLeft_;
  uint64_t number_ = 0;  // of the line that was begun last, from 1
  uint64_t next_ = 0;    // where the line after it begins
};

}  // namespace

IndexCursor::IndexCursor(ByteSource& source, const SectionEntry& index)
    : source_(source), offset_(index.offset), left_(index.length), buffer_(kIndexChunkSize) {}

Status IndexCursor::Next(uint64_t* entry) {
  if (position_ == filled_) {
    filled_ = static_cast<size_t>(std::min<uint64_t>(buffer_.size(), left_));
    position_ = 0;
    if (Status status = source_.ReadAt(offset_, buffer_.data(), filled_); !status.Ok()) {
      return SectionFault(status.GetFault(), Section::kIndex, status.Message());
    }
    offset_ += filled_;
    left_ -= filled_;
  }
  *entry = LoadU64(&buffer_[position_]);
  position_ += kIndexEntrySize;
  return {};
}

Status VerifySections(ByteSource& source, const Layout& layout) {
  for (size_t i = 0; i < kSectionCount; ++i) {
    const auto section = static_cast<Section>(i);
    if (section == Section::kData || section == Section::kIndex) continue;
    if (Status status = ScanSection(source, layout, section, {}); !status.Ok()) return status;
  }
  // The index first: the data's check relies on it.
  IndexCheck index(layout);
  Status status = ScanSection(source, layout, Section::kIndex,
                              [&](uint64_t, const uint8_t* bytes, size_t size, size_t) {
                                return index.Visit(bytes, size);
                              });
  if (!status.Ok()) return status;
  DataCheck data(source, layout);
  if (status = data.Begin(); !status.Ok()) return status;
  return ScanSection(source, layout, Section::kData,
                     [&](uint64_t position, const uint8_t* bytes, size_t size, size_t ahead) {
                       return data.Visit(position, bytes, size, ahead);
                     });
}

}  // namespace NuvFile
