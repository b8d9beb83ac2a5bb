#include "printer/transfer.h"

#include "printer/host_call.h"
#include "printer/values.h"

namespace Nuv::Printer {
namespace {

constexpr std::chrono::seconds kTellsOfWaiting(1);

}  // namespace

Transfer::Transfer(const nuv_send_options* options, CallLimits& limits,
                   const Platform::Clock& clock)
    : options_(Given(options)), limits_(limits), clock_(clock) {}

void Transfer::Enter(int stage) {
  if (stage == stage_) return;
  stage_ = stage;
  Tell();
}

void Transfer::ReportSent(int total, int sent) {
  total_ = total;
  sent_ = sent;
  stage_ = NUV_STAGE_SENDING;
  Tell();
}

void Transfer::ReportWaiting() {
  if (stage_ == NUV_STAGE_WAITING && clock_.Now() < told_ + kTellsOfWaiting) return;
  stage_ = NUV_STAGE_WAITING;
  Tell();
}

void Transfer::Tell() {
  told_ = clock_.Now();
  if (options_.progress == nullptr || limits_.Raised()) return;
  nuv_progress progress = NUV_INIT(nuv_progress);
  progress.stage = stage_;
  progress.bytes_sent = sent_;
  progress.bytes_total = total_;
  const HostCall call;
  if (options_.progress(&progress, options_.user) != 1) limits_.Raise();
}

}  // namespace Nuv::Printer
