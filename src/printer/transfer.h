#ifndef NUV_PRINTER_TRANSFER_H_
#define NUV_PRINTER_TRANSFER_H_

#include <optional>

#include "job/job_context.h"
#include "printer/call_limits.h"
#include "printer/failure.h"

namespace Nuv::Printer {

// What a job tells of one transfer, for the host of the call, who may end it.
//
// Thread-safety: none; all on the thread of the call.
class Transfer final : public Connect::IJobHost {
 public:
  // `options` may be null. Throws Failure for a wrong size. The others outlive it.
  Transfer(const nuv_send_options* options, CallLimits& limits, const Platform::Clock& clock);

  // A new stage (NUV_STAGE_...).
  void Enter(int stage);

  const nuv_send_options& Options() const { return options_; }

  // Bytes that went out, and of how many, without line ends and headers.
  int Sent() const { return sent_; }
  int Total() const { return total_; }
  bool Started() const { return started_; }
  bool All() const { return started_ && sent_ == total_; }

  // How many bytes there will be.
  void Expect(int total) { total_ = total; }

  // Whether the printer may have opened a job for it, and whether it has accepted the order to
  // abandon that.
  bool Opened() const { return opened_; }
  std::optional<bool> Abandoned() const { return abandoned_; }

  // What became of the last command that failed; `command` 0 when none did.
  struct LastError {
    int error = 0;
    int command = 0;
  };
  const LastError& Last() const { return last_; }

  void ReportError(int error, int command) override { last_ = {error, command}; }
  void ReportStart() override { started_ = true; }
  void ReportSent(int total, int sent) override;
  bool IsCancelled() override { return limits_.Raised(); }
  void ReportOpening() override { opened_ = true; }
  void ReportWaiting() override;
  void ReportAbandoned(bool accepted) override { abandoned_ = accepted; }

 private:
  void Tell();

  const nuv_send_options options_;
  CallLimits& limits_;
  const Platform::Clock& clock_;
  int stage_ = 0;
  int sent_ = 0;
  int total_ = 0;
  bool started_ = false;
  bool opened_ = false;
  std::optional<bool> abandoned_;
  LastError last_;
  Platform::Deadline told_{0};
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_TRANSFER_H_
