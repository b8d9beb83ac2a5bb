#include "job/block_transfer.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

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

constexpr std::chrono::milliseconds kBlockPause(15);
// How long a printer waits for an announced image before it takes lines for commands again.
constexpr std::chrono::seconds kPrinterWaits(1);

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

int AnnounceImage(const JobContext& context, const std::function<int()>& announce) {
  const JobClaim claim(context.state.jobRunning);
  if (!claim.Held()) return NUV_FAILED;
  const LinkClaim link(context, JobKind::kLines);
  const int result = announce();
  if (result == NUV_OK) context.state.quietUntil = context.clock.Now() + kPrinterWaits;
  return result;
}

int SendFirmware(const JobContext& context, const std::vector<uint8_t>& image, BlockHeader header,
                 LostLink lost) {
  const JobClaim claim(context.state.jobRunning);
  if (!claim.Held()) return NUV_FAILED;
  LinkClaim link(context, JobKind::kImage);
  context.host.ReportStart();
  bool written = true;
  for (BlockStream blocks(image, header); !blocks.AtEnd();) {
    context.Pause(kBlockPause);
    if (context.host.IsCancelled()) return NUV_CANCELLED;
    const Reason reason = context.channel.Send(blocks.Next());
    if (written && reason != Reason::kNone) {
      Platform::Diagnostic("firmware: the block that ends at byte %zu of %zu is not written: %s",
                           blocks.Sent(), image.size(), WordsFor(reason));
      written = false;
    }
    if (reason != Reason::kNone && lost == LostLink::kEndsTransfer &&
        !context.channel.Look().alive) {
      return context.Interrupted() ? NUV_CANCELLED : NUV_WRITE_FAILED;
    }
    context.host.ReportSent(static_cast<int>(image.size()), static_cast<int>(blocks.Sent()));
  }
  link.Complete();
  return NUV_OK;
}

}  // namespace Nuv::Connect
