#include "job/file_digest.h"

#include <openssl/evp.h>

#include <fstream>
#include <memory>

#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

constexpr size_t kChunkBytes = size_t{64} * 1024;

struct ContextDeleter {
  void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, ContextDeleter>;

// False when the file or the digest fails.
bool Digest(std::ifstream& file, EVP_MD_CTX* context, FileDigest& digest) {
  std::vector<char> chunk(kChunkBytes);
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0) {
    const auto count = static_cast<size_t>(file.gcount());
    if (EVP_DigestUpdate(context, chunk.data(), count) != 1) return false;
    digest.bytes += count;
  }
  if (file.bad() || !file.eof()) return false;
  digest.sha1.resize(EVP_MAX_MD_SIZE);
  unsigned int length = 0;
  if (EVP_DigestFinal_ex(context, digest.sha1.data(), &length) != 1) return false;
  digest.sha1.resize(length);
  return true;
}

}  // namespace

std::optional<FileDigest> DigestOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const DigestContext context(EVP_MD_CTX_new());
  FileDigest digest;
  if (file.is_open() && context != nullptr &&
      EVP_DigestInit_ex(context.get(), EVP_sha1(), nullptr) == 1 &&
      Digest(file, context.get(), digest)) {
    return digest;
  }
  Platform::Diagnostic("no digest of print file %s: it cannot be read", path.c_str());
  return std::nullopt;
}

}  // namespace Nuv::Connect
