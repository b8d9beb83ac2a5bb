#include "printer/log.h"

#include <atomic>
#include <memory>
#include <mutex>

#include "platform/diagnostics.h"
#include "printer/host_call.h"
#include "printer/values.h"

namespace Nuv::Printer {
namespace {

// The host's function; released when nobody uses it any more.
struct HostLog {
  HostLog(int itsLevel, nuv_log_function itsFunction, void* itsUser, nuv_release itsRelease)
      : level(itsLevel), function(itsFunction), user(itsUser), release(itsRelease) {}
  ~HostLog() {
    if (release != nullptr) release(user);
  }
  HostLog(const HostLog&) = delete;
  HostLog& operator=(const HostLog&) = delete;

  const int level;
  const nuv_log_function function;
  void* const user;
  const nuv_release release;
};

// Threads of the library may log while the program ends, so this is never destroyed.
struct Current {
  std::mutex mutex;
  std::shared_ptr<HostLog> log;
  std::atomic<int> level{0};

  static Current& Get() {
    static Current* const kCurrent = new Current;
    return *kCurrent;
  }
  std::shared_ptr<HostLog> Exchange(std::shared_ptr<HostLog> next) {
    const std::lock_guard<std::mutex> lock(mutex);
    level = next == nullptr ? 0 : next->level;
    log.swap(next);
    return next;
  }
};

void LogDiagnostic(const std::string& text) { Log(NUV_LOG_WARNING, {}, text); }

// From the moment that the library is loaded nothing goes to the system's own log.
[[maybe_unused]] const struct TakesDiagnostics {
  TakesDiagnostics() { Platform::SendDiagnosticsTo(&LogDiagnostic); }
} kTakesDiagnostics;

}  // namespace

void Log(int level, const std::string& printer, const std::string& text) {
  Current& current = Current::Get();
  if (level > current.level) return;
  std::shared_ptr<HostLog> log;
  {
    const std::lock_guard<std::mutex> lock(current.mutex);
    log = current.log;
  }
  if (log == nullptr) return;
  nuv_log_line line = NUV_INIT(nuv_log_line);
  line.level = level;
  const std::string who = Repaired(printer), what = Repaired(text);
  line.printer = who.c_str();
  line.text = what.c_str();
  const HostCall call;
  if (log->function(&line, log->user) == 1) return;
  const std::lock_guard<std::mutex> lock(current.mutex);
  if (current.log != log) return;
  current.level = 0;
  current.log = nullptr;  // `log` is released behind the lock
}

void SetLog(int level, nuv_log_function function, void* user, nuv_release release) {
  auto next = std::make_shared<HostLog>(level, function, user, release);
  Current::Get().Exchange(function == nullptr ? nullptr : next);
}

}  // namespace Nuv::Printer
