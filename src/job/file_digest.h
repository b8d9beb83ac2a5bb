#ifndef NUV_JOB_FILE_DIGEST_H_
#define NUV_JOB_FILE_DIGEST_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Nuv::Connect {

struct FileDigest {
  uint64_t bytes = 0;         // length of the file
  std::vector<uint8_t> sha1;  // 20 bytes
};

// Reads the file through once, in memory that does not depend on its size. Nothing, with a
// diagnostic, when it cannot be read to its end.
std::optional<FileDigest> DigestOf(const std::string& path);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_FILE_DIGEST_H_
