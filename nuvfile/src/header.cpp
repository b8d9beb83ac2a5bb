#include "header.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "nuvfile/content.h"

namespace NuvFile {
namespace {

// A byte above 127, CR LF, Ctrl-Z and LF: a transfer that alters text spoils the magic
// and is named as such, instead of surfacing as a wrong checksum somewhere.
constexpr uint8_t kMagic[8] = {0x89, 'N', 'U', 'V', '\r', '\n', 0x1A, '\n'};

// Offsets of the header's fields.
constexpr size_t kVersionAt = 8;
constexpr size_t kSectionCountAt = 12;
constexpr size_t kFileSizeAt = 16;
constexpr size_t kLineCountAt = 24;
constexpr size_t kReservedAt = 32;

struct SectionRow {
  char tag[5];
  uint64_t maxLength;
};

constexpr SectionRow kSectionRows[kSectionCount] = {
    {"MACH", kMachineIdLength},    {"PROJ", kMaxIdLength},
    {"MATL", kMaxIdLength},        {"AKEY", kMaxKeyLength},
    {"L101", kMaxRecordLength},    {"L102", kMaxRecordLength},
    {"L103", kMaxRecordLength},    {"PREV", kMaxPreviewLength},
    {"DATA", kMaxModelBytes},      {"INDX", (kMaxLines + 1) * kIndexEntrySize},
    {"ARGS", kMaxArgumentsLength},
};

std::string Expected(uint64_t expected, uint64_t found) {
  return "expected " + std::to_string(expected) + ", found " + std::to_string(found);
}

std::string Hex(uint32_t value) {
  char text[11];
  std::snprintf(text, sizeof(text), "0x%08x", static_cast<unsigned>(value));
  return text;
}

Status HeaderFault(const std::string& what) { return {Fault::kBadHeader, "header: " + what}; }

// What must hold before the rest of the header means anything.
Status CheckPreamble(const HeaderBytes& bytes, size_t available) {
  if (available < sizeof(kMagic) || std::memcmp(bytes.data(), kMagic, sizeof(kMagic)) != 0) {
    return {Fault::kNotPrintFile, "not a print file: its first 8 bytes are not those of one"};
  }
  if (available < kSectionCountAt) return HeaderFault("the file ends before the version");
  if (const uint32_t version = LoadU32(&bytes[kVersionAt]); version != kFormatVersion) {
    return {Fault::kUnknownVersion, "format version: " + Expected(kFormatVersion, version)};
  }
  if (available < kHeaderSize) {
    return HeaderFault("the file ends inside it: expected at least " + std::to_string(kHeaderSize) +
                       " bytes, found " + std::to_string(available));
  }
  const uint32_t stored = LoadU32(&bytes[kHeaderChecksumOffset]);
  if (const uint32_t computed = HeaderChecksum(bytes); stored != computed) {
    return {Fault::kBadChecksum,
            "header: its checksum is " + Hex(stored) + ", its bytes give " + Hex(computed)};
  }
  return {};
}

Status CheckFields(const HeaderBytes& bytes, uint64_t actualSize) {
  if (const uint32_t count = LoadU32(&bytes[kSectionCountAt]); count != kSectionCount) {
    return HeaderFault("number of sections: " + Expected(kSectionCount, count));
  }
  if (const uint64_t size = LoadU64(&bytes[kFileSizeAt]); size != actualSize) {
    return HeaderFault("size of the file: " + Expected(size, actualSize) +
                       (actualSize < size ? ", it has been cut short" : ""));
  }
  if (const uint64_t lines = LoadU64(&bytes[kLineCountAt]); lines > kMaxLines) {
    return {Fault::kTooLarge, "header: expected at most " + std::to_string(kMaxLines) +
                                  " data lines, found " + std::to_string(lines)};
  }
  if (const uint32_t reserved = LoadU32(&bytes[kReservedAt]); reserved != 0) {
    return HeaderFault("reserved field: " + Expected(0, reserved));
  }
  return {};
}

// Sections follow each other without gaps. That rules out overlaps and leaves no byte
// outside a checksum. `begin` is never above `file_size`, so the difference cannot wrap.
Status CheckEntry(size_t i, const uint8_t* entry, uint64_t begin, uint64_t fileSize) {
  const auto section = static_cast<Section>(i);
  const SectionRow& row = kSectionRows[i];
  if (std::memcmp(entry, row.tag, 4) != 0) {
    return HeaderFault("entry " + std::to_string(i + 1) + " of the section table is not " +
                       row.tag);
  }
  if (const uint64_t offset = LoadU64(entry + 8); offset != begin) {
    return SectionFault(Fault::kBadHeader, section,
                        "offset: " + Expected(begin, offset) +
                            (offset < begin ? ", it overlaps what precedes it"
                                            : ", it leaves a gap or lies past the end"));
  }
  const uint64_t length = LoadU64(entry + 16);
  if (length > row.maxLength) {
    return SectionFault(Fault::kTooLarge, section,
                        "length: expected at most " + std::to_string(row.maxLength) + ", found " +
                            std::to_string(length));
  }
  if (length > fileSize - begin) {
    return SectionFault(Fault::kBadHeader, section,
                        "length: " + std::to_string(length) + " goes past the end, only " +
                            std::to_string(fileSize - begin) + " bytes follow");
  }
  return {};
}

}  // namespace

const char* SectionTag(Section section) { return kSectionRows[static_cast<size_t>(section)].tag; }

HeaderBytes EncodeHeader(const Layout& layout) {
  HeaderBytes bytes{};
  std::copy(std::begin(kMagic), std::end(kMagic), bytes.begin());
  StoreU32(&bytes[kVersionAt], kFormatVersion);
  StoreU32(&bytes[kSectionCountAt], kSectionCount);
  StoreU64(&bytes[kFileSizeAt], layout.fileSize);
  StoreU64(&bytes[kLineCountAt], layout.lineCount);
  for (size_t i = 0; i < kSectionCount; ++i) {
    uint8_t* entry = &bytes[kFixedHeaderSize + i * kTableEntrySize];
    std::memcpy(entry, kSectionRows[i].tag, 4);
    StoreU32(entry + 4, layout.sections[i].checksum);
    StoreU64(entry + 8, layout.sections[i].offset);
    StoreU64(entry + 16, layout.sections[i].length);
  }
  StoreU32(&bytes[kHeaderChecksumOffset], HeaderChecksum(bytes));
  return bytes;
}

Status DecodeHeader(const HeaderBytes& bytes, size_t available, uint64_t actualSize,
                    Layout* layout) {
  if (Status status = CheckPreamble(bytes, available); !status.Ok()) return status;
  if (Status status = CheckFields(bytes, actualSize); !status.Ok()) return status;
  Layout decoded;
  decoded.fileSize = actualSize;
  decoded.lineCount = LoadU64(&bytes[kLineCountAt]);
  uint64_t begin = kHeaderSize;
  for (size_t i = 0; i < kSectionCount; ++i) {
    const uint8_t* entry = &bytes[kFixedHeaderSize + i * kTableEntrySize];
    if (Status status = CheckEntry(i, entry, begin, actualSize); !status.Ok()) return status;
    decoded.sections[i] = {begin, LoadU64(entry + 16), LoadU32(entry + 4)};
    begin += decoded.sections[i].length;
  }
  if (begin != actualSize) {
    return HeaderFault("end of the last section: " + Expected(actualSize, begin));
  }
  const uint64_t indexLength = (decoded.lineCount + 1) * kIndexEntrySize;
  if (decoded.At(Section::kIndex).length != indexLength) {
    return SectionFault(Fault::kBadHeader, Section::kIndex,
                        "length for " + std::to_string(decoded.lineCount) +
                            " lines: " + Expected(indexLength, decoded.At(Section::kIndex).length));
  }
  *layout = decoded;
  return {};
}

uint32_t HeaderChecksum(const HeaderBytes& bytes) {
  const uint32_t checksum = UpdateChecksum(0, bytes.data(), kHeaderChecksumOffset);
  return UpdateChecksum(checksum, &bytes[kFixedHeaderSize], kHeaderSize - kFixedHeaderSize);
}

uint32_t UpdateChecksum(uint32_t checksum, const void* bytes, size_t length) {
  // zlib takes a null pointer, such as that of an empty vector, as a request to start over.
  if (length == 0) return checksum;
  return static_cast<uint32_t>(crc32_z(checksum, static_cast<const Bytef*>(bytes), length));
}

void StoreU32(uint8_t* out, uint32_t value) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

void StoreU64(uint8_t* out, uint64_t value) {
  for (int i = 0; i < 8; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

uint32_t LoadU32(const uint8_t* in) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value |= static_cast<uint32_t>(in[i]) << (8 * i);
  return value;
}

uint64_t LoadU64(const uint8_t* in) {
  return LoadU32(in) | static_cast<uint64_t>(LoadU32(in + 4)) << 32;
}

Status SectionFault(Fault fault, Section section, const std::string& what) {
  return {fault, std::string("section ") + SectionTag(section) + ": " + what};
}

}  // namespace NuvFile
