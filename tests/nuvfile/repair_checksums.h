// Makes changed bytes of a print file consistent again, to reach the checks behind the
// checksums.
#ifndef TESTS_NUVFILE_REPAIR_CHECKSUMS_H_
#define TESTS_NUVFILE_REPAIR_CHECKSUMS_H_

#include <algorithm>
#include <cstdint>
#include <vector>

#include "header.h"

namespace NuvFile {

// Sets the checksum of every section that lies inside `bytes`, and that of the header.
inline void RepairChecksums(std::vector<uint8_t>* bytes) {
  if (bytes->size() < kHeaderSize) return;
  for (size_t i = 0; i < kSectionCount; ++i) {
    uint8_t* entry = bytes->data() + kFixedHeaderSize + i * kTableEntrySize;
    const uint64_t offset = LoadU64(entry + 8);
    const uint64_t length = LoadU64(entry + 16);
    if (offset > bytes->size() || length > bytes->size() - offset) continue;
    StoreU32(entry + 4, UpdateChecksum(0, bytes->data() + offset, static_cast<size_t>(length)));
  }
  HeaderBytes header;
  std::copy_n(bytes->begin(), kHeaderSize, header.begin());
  StoreU32(bytes->data() + kHeaderChecksumOffset, HeaderChecksum(header));
}

}  // namespace NuvFile

#endif  // TESTS_NUVFILE_REPAIR_CHECKSUMS_H_
