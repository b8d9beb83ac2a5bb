#include "job/line_transfer.h"

#include <chrono>

#include "job/printer_exchange.h"
#include "nuvconnect/ResultCodes.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

constexpr std::chrono::milliseconds kPassPause(100);
constexpr float kPercent = 100.0F;

}  // namespace

const char kLineEnd[3] = "\r\n";

LineTransfer::LineTransfer(const JobContext& context, int total, NuvJobProgressCallback progress)
    : context_(context), progress_(progress), total_(total) {}

void LineTransfer::Start() {
  context_.host.ReportStart();
  context_.state.freeBuffer = QueryFreeBufferSize(context_, context_.state.machineId);
}

int LineTransfer::Pass(const std::vector<uint8_t>& line, uint64_t cost, bool& sent) {
  sent = context_.state.freeBuffer >= line.size();
  const int result = sent ? Write(line, cost) : WaitForSpace();
  if (result == NUV_OK) context_.Pause(kPassPause);
  return result;
}

int LineTransfer::WaitForSpace() {
  context_.state.freeBuffer = QueryFreeBufferSize(context_, context_.state.machineId);
  context_.host.ReportWaiting();
  // The answer may still be on its way: what is left to be said goes out behind it.
  if (context_.Interrupted()) return NUV_OK;
  // A new connection would carry on behind lines that the printer may never have taken.
  if (IsLost()) return NUV_WRITE_FAILED;
  const Reason reason = context_.channel.Reopen();
  if (reason != Reason::kNone) {
    Platform::Diagnostic("job: lost while waiting for buffer space: %s", WordsFor(reason));
  }
  return ResultOf(reason, Step::kWaitingForSpace);
}

bool LineTransfer::IsLost() const {
  const LinkLook look = context_.channel.Look();
  if (look.alive || !look.unconfirmed) return false;
  Platform::Diagnostic("job: the link ended after %d of %d bytes, not all of them confirmed", sent_,
                       total_);
  return true;
}

int LineTransfer::Write(const std::vector<uint8_t>& line, uint64_t cost) {
  const auto textBytes = static_cast<int>(line.size() - kLineEndBytes);
  const Reason reason = context_.channel.Send(line);
  if (reason != Reason::kNone) {
    Platform::Diagnostic("job: line not written after %d of %d bytes: %s", sent_, total_,
                         WordsFor(reason));
    return ResultOf(reason, Step::kStream);
  }
  sent_ += textBytes;
  const float percent = static_cast<float>(sent_) / static_cast<float>(total_) * kPercent;
  if (progress_ != nullptr) CallHost(progress_, percent);
  context_.host.ReportSent(total_, sent_);
  // All that was charged so far is taken off each time: the estimate shrinks faster than the buffer
  // fills, so the printer is asked again before it can overflow.
  charged_ += cost;
  uint64_t& freeBuffer = context_.state.freeBuffer;
  freeBuffer = freeBuffer > charged_ ? freeBuffer - charged_ : 0;
  return NUV_OK;
}

}  // namespace Nuv::Connect
