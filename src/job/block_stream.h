#ifndef NUV_JOB_BLOCK_STREAM_H_
#define NUV_JOB_BLOCK_STREAM_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Nuv::Connect {

// Most bytes that go over the wire in one block, its header included.
constexpr size_t kWireBlockBytes = 10240;

// What stands before the payload of a block: nothing, or "L105" and the payload's length as four
// bytes, least significant first.
enum class BlockHeader { kNone, kL105 };

// Cuts bytes into the blocks in which they go over the wire. Holds no copy of them.
class BlockStream {
 public:
  // `bytes` outlive the stream.
  BlockStream(const std::vector<uint8_t>& bytes, BlockHeader header);

  bool AtEnd() const { return sent_ >= bytes_.size(); }

  // The next block, header included; not at the end.
  std::vector<uint8_t> Next();

  // Bytes in the blocks so far, without headers.
  size_t sent() const { return sent_; }

 private:
  const std::vector<uint8_t>& bytes_;
  const BlockHeader header_;
  size_t sent_ = 0;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_BLOCK_STREAM_H_
