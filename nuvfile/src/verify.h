// Verification of the sections of a print file, in memory of fixed size.
#ifndef NUVFILE_SRC_VERIFY_H_
#define NUVFILE_SRC_VERIFY_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "nuvfile/byte_source.h"
#include "nuvfile/sections.h"
#include "nuvfile/status.h"

namespace NuvFile {

// Checks every section's checksum, that the index describes the data lines and that
// every data line may be sent to a printer. `layout` has passed DecodeHeader.
// A wrong checksum is reported before what the changed bytes led to.
Status VerifySections(ByteSource& source, const Layout& layout);

// Reads the index from its first entry on, through a small buffer.
class IndexCursor {
 public:
  IndexCursor(ByteSource& source, const SectionEntry& index);

  // The next entry. Not to be called more often than there are entries.
  Status Next(uint64_t* entry);

 private:
  ByteSource& source_;
  uint64_t offset_;
  uint64_t left_;  // bytes of the index that are not in the buffer yet
  std::vector<uint8_t> buffer_;
  size_t position_ = 0;
  size_t filled_ = 0;
};

}  // namespace NuvFile

#endif  // NUVFILE_SRC_VERIFY_H_
