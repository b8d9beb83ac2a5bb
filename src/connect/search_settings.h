#ifndef NUV_CONNECT_SEARCH_SETTINGS_H_
#define NUV_CONNECT_SEARCH_SETTINGS_H_

#include <atomic>
#include <mutex>
#include <string>

namespace Nuv::Connect {

constexpr int kDefaultSearchPort = 6013;
constexpr int kDefaultSearchTimeoutMs = 3000;
constexpr char kDefaultSearchMessage[] = "F195\r\n";

// How printers are searched on the network. One for the process, kept across framework instances.
//
// Thread-safety: safe.
class SearchSettings {
 public:
  static SearchSettings& Instance();

  int Port() const { return port_; }
  int TimeoutMs() const { return timeoutMs_; }  // as it was set
  std::string Message() const;

  void SetPort(int port) { port_ = port; }
  void SetTimeoutMs(int timeoutMs) { timeoutMs_ = timeoutMs; }
  void SetMessage(const std::string& message);

 private:
  std::atomic<int> port_{kDefaultSearchPort};
  std::atomic<int> timeoutMs_{kDefaultSearchTimeoutMs};
  mutable std::mutex messageMutex_;
  std::string message_ = kDefaultSearchMessage;
};

// The time limit that a link uses for `timeoutMs`: a wait must never be for ever, so 0 and below
// stand for the default.
int EffectiveTimeoutMs(int timeoutMs);

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_SEARCH_SETTINGS_H_
