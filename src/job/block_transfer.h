// What goes out in blocks: firmware images, and what an Android printer gets before the data lines.
#ifndef NUV_JOB_BLOCK_TRANSFER_H_
#define NUV_JOB_BLOCK_TRANSFER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "job/job_context.h"

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
  size_t Sent() const { return sent_; }

 private:
  const std::vector<uint8_t>& bytes_;
  const BlockHeader header_;
  size_t sent_ = 0;
};

// Runs `announce`, which announces an image to the printer, and returns its result. The status
// thread stays off the link meanwhile and, once the printer has accepted, for as long as it waits
// for the image: it would take a query for a part of it, and a new connection for its end.
// 1 when a job or another transfer is running; nothing is announced then.
int AnnounceImage(const JobContext& context, const std::function<int()>& announce);

// What a block does that cannot be written because the link has ended.
enum class LostLink { kGoesOn, kEndsTransfer };

// Streams a firmware image to the printer, one block every 15 ms, on the caller's thread. Tells the
// host of the start and of each block, and asks it before each block whether to go on. The printer
// acknowledges nothing, and a block that is not written does not stop the transfer, unless the link
// has ended and `lost` says so: what the printer answers to the next command is the only report.
//
// 0 every block was handed to the channel, 1 another transfer is running, 2 cancelled, 20 the link
// has ended.
int SendFirmware(const JobContext& context, const std::vector<uint8_t>& image, BlockHeader header,
                 LostLink lost = LostLink::kGoesOn);

}  // namespace Nuv::Connect

#endif  // NUV_JOB_BLOCK_TRANSFER_H_
