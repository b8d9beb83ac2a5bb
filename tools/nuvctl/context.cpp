#include "context.h"

#include "utf8.h"

namespace NuvCtl {

nuv::Call Context::Call(const std::string& who) const {
  constexpr int64_t kPatienceMs = 2000;
  nuv::Call call = Endless();
  call.timeLimit = std::chrono::milliseconds(choice.timeoutMs);
  call.stillWanted = [this, who, begin = system.NowMs(), told = false]() mutable {
    if (!told && system.NowMs() - begin >= kPatienceMs) {
      told = true;
      output.Remark("waiting for " + Printable(who) + "; another program may be using it");
    }
    return !system.Interrupted();
  };
  return call;
}

nuv::Call Context::Endless() const {
  nuv::Call call;
  call.stillWanted = [this] { return !system.Interrupted(); };
  return call;
}

}  // namespace NuvCtl
