// Outcome of an operation on a print file.
#ifndef NUVFILE_STATUS_H_
#define NUVFILE_STATUS_H_

#include <string>
#include <utility>

namespace NuvFile {

// The values up to kOutOfMemory are those of NuvFileLoadResult in NuvFile.h.
enum class Fault {
  kNone = 0,
  kCannotOpen = 1,
  kReadFailed = 2,
  kNotPrintFile = 3,
  kUnknownVersion = 4,
  kBadHeader = 5,
  kBadChecksum = 6,
  kBadIndex = 7,
  kBadText = 8,
  kBadLine = 9,
  kTooLarge = 10,
  kOutOfMemory = 11,
  kWriteFailed = 12,
  kLineOutOfRange = 13,
};

// Short name for machine-readable output, such as "bad-checksum". Never changes.
const char* FaultName(Fault fault);

// A fault and a sentence that names the part concerned, what was expected and what was
// found. Copyable; a successful status holds no text and costs no allocation.
class [[nodiscard]] Status {
 public:
  Status() = default;
  Status(Fault fault, std::string message) : fault_(fault), message_(std::move(message)) {}

  bool Ok() const { return fault_ == Fault::kNone; }
  Fault GetFault() const { return fault_; }
  const std::string& Message() const { return message_; }

 private:
  Fault fault_ = Fault::kNone;
  std::string message_;
};

}  // namespace NuvFile

#endif  // NUVFILE_STATUS_H_
