#include "job/block_stream.h"

#include <algorithm>
#include <iterator>

namespace Nuv::Connect {
namespace {

constexpr uint8_t kName[] = {'L', '1', '0', '5'};
constexpr size_t kHeaderBytes = 8;
constexpr int kBitsPerByte = 8;

void WriteHeader(size_t payload, uint8_t* header) {
  header = std::copy(std::begin(kName), std::end(kName), header);
  for (size_t i = 0; i < kHeaderBytes - sizeof kName; ++i) {
    header[i] = static_cast<uint8_t>(payload >> (i * kBitsPerByte));
  }
}

}  // namespace

BlockStream::BlockStream(const std::vector<uint8_t>& bytes, BlockHeader header)
    : bytes_(bytes), header_(header) {}

std::vector<uint8_t> BlockStream::Next() {
  const size_t headerBytes = header_ == BlockHeader::kL105 ? kHeaderBytes : 0;
  const size_t payload = std::min(bytes_.size() - sent_, kWireBlockBytes - headerBytes);
  std::vector<uint8_t> block(headerBytes + payload);
  if (headerBytes != 0) WriteHeader(payload, block.data());
  std::copy_n(bytes_.data() + sent_, payload, block.data() + headerBytes);
  sent_ += payload;
  return block;
}

}  // namespace Nuv::Connect
