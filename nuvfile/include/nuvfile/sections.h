// The sections of a print file and where they lie. FORMAT.md shows the bytes.
#ifndef NUVFILE_SECTIONS_H_
#define NUVFILE_SECTIONS_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace NuvFile {

// In the order of the section table, which is also their order in the file.
enum class Section : size_t {
  kMachineId,
  kProjectId,
  kMaterialId,
  kAesKey,
  kL101,
  kL102,
  kL103,
  kPreview,
  kData,
  kIndex,
  kArguments,  // last: `layers` may only be known when the last line has been written
};
inline constexpr size_t kSectionCount = 11;

// Offset from the start of the file and length, in bytes; CRC-32 of the bytes.
struct SectionEntry {
  uint64_t offset = 0;
  uint64_t length = 0;
  uint32_t checksum = 0;
};

struct Layout {
  uint64_t fileSize = 0;
  uint64_t lineCount = 0;
  std::array<SectionEntry, kSectionCount> sections;

  const SectionEntry& At(Section section) const { return sections[static_cast<size_t>(section)]; }
  SectionEntry& At(Section section) { return sections[static_cast<size_t>(section)]; }
};

// Four-letter name of the section in the file and in messages, such as "DATA".
const char* SectionTag(Section section);

}  // namespace NuvFile

#endif  // NUVFILE_SECTIONS_H_
