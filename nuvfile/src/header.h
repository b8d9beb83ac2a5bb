// The fixed first bytes of a print file: header and section table.
#ifndef NUVFILE_SRC_HEADER_H_
#define NUVFILE_SRC_HEADER_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "nuvfile/sections.h"
#include "nuvfile/status.h"

namespace NuvFile {

inline constexpr uint32_t kFormatVersion = 1;
inline constexpr size_t kFixedHeaderSize = 40;
inline constexpr size_t kTableEntrySize = 24;
inline constexpr size_t kHeaderSize = kFixedHeaderSize + kSectionCount * kTableEntrySize;
inline constexpr size_t kHeaderChecksumOffset = 36;
inline constexpr size_t kIndexEntrySize = 8;

using HeaderBytes = std::array<uint8_t, kHeaderSize>;

HeaderBytes EncodeHeader(const Layout& layout);

// Checks everything that can be told without reading the sections; afterwards every
// section lies inside the file, none overlaps another and no byte lies between them.
// `available`: how many of `bytes` were read, less than kHeaderSize for a short file.
// `actual_size`: size of the file on disk. On failure `*layout` is left as it was.
Status DecodeHeader(const HeaderBytes& bytes, size_t available, uint64_t actualSize,
                    Layout* layout);

// CRC-32 of header and table, which leaves out the four bytes that hold it.
uint32_t HeaderChecksum(const HeaderBytes& bytes);

// Continues the CRC-32 `checksum` (0 to begin) over more bytes.
uint32_t UpdateChecksum(uint32_t checksum, const void* bytes, size_t length);

void StoreU32(uint8_t* out, uint32_t value);
void StoreU64(uint8_t* out, uint64_t value);
uint32_t LoadU32(const uint8_t* in);
uint64_t LoadU64(const uint8_t* in);

// "DATA: expected 12, found 13": all faults of a section read alike.
Status SectionFault(Fault fault, Section section, const std::string& what);

}  // namespace NuvFile

#endif  // NUVFILE_SRC_HEADER_H_
