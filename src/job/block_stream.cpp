#include "job/block_stream.h"

#include <algorithm>
#include <iterator>

namespace Nuv::Connect {
namespace {

constexpr uint8_t kName[] = {'L', '1', '0', '5'};
constexpr size_t kHeaderBytes = 8;
constexpr int kBitsPerByte = 8;

void AppendHeader(size_t payload, std::vector<uint8_t>& block) {
  block.insert(block.end(), std::begin(kName), std::end(kName));
  for (size_t i = 0; i < kHeaderBytes - sizeof kName; ++i) {
    block.push_back(static_cast<uint8_t>(payload >> (i * kBitsPerByte)));
  }
}

}  // namespace

BlockStream::BlockStream(const std::vector<uint8_t>& bytes, BlockHeader header)
    : bytes_(bytes), header_(header) {}

std::vector<uint8_t> BlockStream::Next() {
  const size_t headerBytes = header_ == BlockHeader::kL105 ? kHeaderBytes : 0;
  const size_t payload = std::min(bytes_.size() - sent_, kWireBlockBytes - headerBytes);
  std::vector<uint8_t> block;
  block.reserve(headerBytes + payload);
  if (headerBytes != 0) AppendHeader(payload, block);
  const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(sent_);
  block.insert(block.end(), begin, begin + static_cast<std::ptrdiff_t>(payload));
  sent_ += payload;
  return block;
}

}  // namespace Nuv::Connect
