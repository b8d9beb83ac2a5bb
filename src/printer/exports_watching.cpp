// Watches.

#include "printer/query.h"
#include "printer/watch.h"

using namespace Nuv::Printer;

namespace {

constexpr int32_t kShortestIntervalMs = 1000;

std::shared_ptr<Watch> Get(const nuv_watch* handle) {
  if (auto watch = Watches().Find(handle)) return watch;
  throw Failure{NUV_RESULT_BAD_HANDLE, {}};
}

}  // namespace

nuv_result nuv_printer_watch(nuv_watch** out, nuv_printer* printer, int32_t intervalMs,
                             nuv_watch_function function, void* user, nuv_release release) {
  if (out != nullptr) *out = nullptr;
  const nuv_result result = Guarded(nullptr, [&] {
    if (out == nullptr || function == nullptr || intervalMs < kShortestIntervalMs) {
      throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a watch without a function, or too often"};
    }
    const auto watch = std::make_shared<Watch>(OpenPrinters::Instance().Get(printer),
                                               std::chrono::milliseconds(intervalMs),
                                               WatchHost{function, user, release});
    nuv_watch* const handle = Watches().Add(watch);
    *out = handle;  // its function may need it at once
    watch->Start();
  });
  if (result != NUV_RESULT_OK && release != nullptr) release(user);
  return result;
}

nuv_result nuv_watch_wait(nuv_watch* watch, const nuv_call* call) {
  return Guarded(nullptr, [&] {
    CallLimits limits(call, 0, Nuv::Platform::SystemClock());
    Get(watch)->Wait(limits);
  });
}

void nuv_watch_free(nuv_watch* watch) {
  if (const std::shared_ptr<Watch> found = Watches().Remove(watch)) found->End();
}
