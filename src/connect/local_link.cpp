#include "connect/local_link.h"

#include "connect/search_settings.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

constexpr int kUsb = 0;
constexpr int kSockets = 1;

}  // namespace

bool LocalLink::SearchDevices(std::vector<std::string>& found, const std::string& address,
                              const std::string& netmask, int timeoutMs) {
  const SearchSettings& settings = SearchSettings::Instance();
  return sockets_.SearchDevices(settings.message(), settings.port(), address, netmask,
                                EffectiveTimeoutMs(timeoutMs), found);
}

void LocalLink::set_mode(int mode) {
  if (mode != kUsb && mode != kSockets) {
    Platform::Diagnostic("local link: no mode %d", mode);
    return;
  }
  if (usesSockets_ == (mode == kSockets)) return;
  Close();
  usesSockets_ = mode == kSockets;
}

void LocalLink::GiveUp() {
  givenUp_ = true;
  usb_.GiveUp();
  sockets_.GiveUp();
}

}  // namespace Nuv::Connect
