#ifndef NUV_JOB_PRINT_STATUS_HANDLER_H_
#define NUV_JOB_PRINT_STATUS_HANDLER_H_

#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "job/job_context.h"
#include "nuvconnect/Callbacks.h"
#include "platform/clock.h"

namespace Nuv::Connect {

// The status thread: asks the printer at an interval whether it prints, and tells the host how far
// it is. It sends nothing while job or firmware data is streamed.
//
// Thread-safety: Start from any thread; destruction beside no other call.
class PrintStatusHandler {
 public:
  // `channel` and `state` are shared with the thread, which may outlive this object; `clock`
  // outlives this object.
  PrintStatusHandler(std::shared_ptr<IChannel> channel, std::shared_ptr<JobState> state,
                     Platform::Clock& clock);

  // Raises `state->closing` and waits for the thread. On the thread itself, that is, when the host
  // closes inside its callback, nothing is waited for: the thread ends after the callback.
  ~PrintStatusHandler();
  PrintStatusHandler(const PrintStatusHandler&) = delete;
  PrintStatusHandler& operator=(const PrintStatusHandler&) = delete;

  // Starts the thread with the first call that has a callback; later calls change nothing.
  // `intervalMs` below 1000 counts as 1000. False when the system gave no thread.
  bool Start(NuvPrintingInfoCallback callback, uint32_t intervalMs);

 private:
  const std::shared_ptr<IChannel> channel_;
  const std::shared_ptr<JobState> state_;
  Platform::Clock& clock_;
  std::mutex starting_;
  std::thread thread_;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_PRINT_STATUS_HANDLER_H_
