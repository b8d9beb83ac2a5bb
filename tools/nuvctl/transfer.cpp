#include "transfer.h"

#include "progress.h"

namespace nuvctl {
namespace {

ProgressStyle StyleFor(const Context& context) {
  if (context.options.json) return ProgressStyle::kSilent;
  return context.system.ErrorIsTerminal() ? ProgressStyle::kBar : ProgressStyle::kLines;
}

// While it lives, the library's send callbacks lead here and Ctrl-C cancels instead of killing.
// The callbacks carry no argument of the host's, hence the one active session.
class Session {
 public:
  explicit Session(const Context& context)
      : system_(context.system), view_(StyleFor(context), context.err, context.system) {
    active_ = this;
    API_RegisterSendDataStartCallback([] { active_->view_.Start(); });
    API_RegisterSendDataUpdateCallback([](int total, int sent) { active_->Update(total, sent); });
    API_RegisterSendDataCancelCallback([] { return active_->Cancel(); });
    system_.WatchInterrupts(true);
  }

  ~Session() {
    API_RegisterSendDataStartCallback(nullptr);
    API_RegisterSendDataUpdateCallback(nullptr);
    API_RegisterSendDataCancelCallback(nullptr);
    system_.WatchInterrupts(false);
    view_.Finish();
    active_ = nullptr;
  }

  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Transfer Run(const SendFunction& send) {
    transfer_.result = send();
    transfer_.elapsed_ms = view_.ElapsedMs();
    transfer_.too_late = system_.Interrupted() && !transfer_.cancelled;
    return transfer_;
  }

 private:
  void Update(int total, int sent) {
    transfer_.reported = true;
    transfer_.total = total;
    transfer_.sent = sent;
    view_.Update(total, sent);
  }

  bool Cancel() {
    if (system_.Interrupted()) transfer_.cancelled = true;
    return transfer_.cancelled;
  }

  static Session* active_;

  System& system_;
  ProgressView view_;
  Transfer transfer_;
};

Session* Session::active_ = nullptr;

}  // namespace

Transfer RunTransfer(const Context& context, const SendFunction& send) {
  Session session(context);
  return session.Run(send);
}

}  // namespace nuvctl
