#include "nuvfile/status.h"

namespace NuvFile {

const char* FaultName(Fault fault) {
  switch (fault) {
    case Fault::kNone:
      return "none";
    case Fault::kCannotOpen:
      return "cannot-open";
    case Fault::kReadFailed:
      return "read-failed";
    case Fault::kNotPrintFile:
      return "not-a-print-file";
    case Fault::kUnknownVersion:
      return "unknown-version";
    case Fault::kBadHeader:
      return "bad-header";
    case Fault::kBadChecksum:
      return "bad-checksum";
    case Fault::kBadIndex:
      return "bad-index";
    case Fault::kBadText:
      return "bad-text";
    case Fault::kBadLine:
      return "bad-line";
    case Fault::kTooLarge:
      return "too-large";
    case Fault::kOutOfMemory:
      return "out-of-memory";
    case Fault::kWriteFailed:
      return "write-failed";
    case Fault::kLineOutOfRange:
      return "line-out-of-range";
  }
  return "unknown";
}

}  // namespace NuvFile
