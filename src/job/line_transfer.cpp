#include "job/line_transfer.h"

#include <chrono>

#include "job/free_buffer.h"
#include "job/host_call.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

constexpr std::chrono::milliseconds kPassPause(100);
constexpr float kPercent = 100.0F;

}  // namespace

const char kLineEnd[3] = "\r\n";

LineTransfer::LineTransfer(const JobContext& context, int32_t total,
                           NuvJobProgressCallback progress)
    : context_(context), progress_(progress), total_(total) {}

void LineTransfer::Start() {
  context_.callbacks.ReportStart();
  context_.state.freeBuffer = QueryFreeBufferSize(context_, context_.state.machineId);
}

int32_t LineTransfer::Pass(std::vector<uint8_t>&& line, uint64_t cost, bool& sent) {
  sent = context_.state.freeBuffer >= cost;
  if (sent) {
    const int32_t result = Write(std::move(line), cost);
    if (result != NUV_OK) return result;
  } else {
    context_.state.freeBuffer = QueryFreeBufferSize(context_, context_.state.machineId);
    if (!context_.channel.OpenDevice()) {
      Platform::Diagnostic("job: the printer was lost while waiting for buffer space");
      return NUV_NO_BUFFER_SPACE;
    }
  }
  context_.clock.SleepFor(kPassPause);
  return NUV_OK;
}

int32_t LineTransfer::Write(std::vector<uint8_t>&& line, uint64_t cost) {
  const auto textBytes = static_cast<int32_t>(line.size() - kLineEndBytes);
  if (!context_.channel.SendBytes(std::move(line))) {
    Platform::Diagnostic("job: line not written after %d of %d bytes", sent_, total_);
    return NUV_WRITE_FAILED;
  }
  sent_ += textBytes;
  const float percent = static_cast<float>(sent_) / static_cast<float>(total_) * kPercent;
  if (progress_ != nullptr) CallHost(progress_, percent);
  context_.callbacks.ReportSent(total_, sent_);
  // All that was charged so far is taken off each time: the estimate shrinks faster than the buffer
  // fills, so the printer is asked again before it can overflow.
  charged_ += cost;
  uint64_t& freeBuffer = context_.state.freeBuffer;
  freeBuffer = freeBuffer > charged_ ? freeBuffer - charged_ : 0;
  return NUV_OK;
}

}  // namespace Nuv::Connect
