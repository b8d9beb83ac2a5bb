#ifndef NUV_CONNECT_LOCAL_LINK_H_
#define NUV_CONNECT_LOCAL_LINK_H_

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "connect/socket_mode.h"
#include "connect/usb_mode.h"

namespace Nuv::Connect {

// Printers on USB, and the channel's own UDP search with plain TCP connections: the mode decides
// which of the two opens, writes and reads.
//
// Thread-safety: none but for GiveUp; the channel serialises the calls.
class LocalLink {
 public:
  // `clock` outlives the link.
  explicit LocalLink(std::unique_ptr<ConnectorBase> usb,
                     Platform::Clock& clock = Platform::SystemClock())
      : usb_(std::move(usb), clock) {}

  // The search by UDP, in either mode, with the process-wide message and port; see SocketMode. 0 or
  // below as `timeoutMs` stands for the default. False: not made.
  bool SearchDevices(std::vector<std::string>& found, const std::string& address,
                     const std::string& netmask, int timeoutMs);

  // The printers on USB, in either mode. False: they could not be listed.
  bool EnumerateDevices(std::vector<std::string>& found) { return usb_.EnumerateDevices(found); }

  // See LocalMode.
  bool Open(int index) { return !givenUp_ && Current().Open(index); }
  bool Reopen(bool inJob) { return !givenUp_ && Current().Reopen(inJob); }
  void Close() { Current().Close(); }
  bool IsOpen() const { return Current().IsOpen(); }
  LinkState Look() { return Current().Look(); }
  // Whether a printer is open that opening again keeps; sockets are always connected anew.
  bool KeepsOpen() { return !usesSockets_ && Look() == LinkState::kAlive; }
  bool DiscardUntilQuiet(int quietMs, int limitMs) {
    return Current().DiscardUntilQuiet(quietMs, limitMs);
  }
  bool Write(const uint8_t* data, size_t length) {
    return !givenUp_ && Current().Write(data, length);
  }
  std::string ReadReply(Platform::Interrupt* interrupt) { return Current().ReadReply(interrupt); }
  bool LastRead(std::vector<uint8_t>& data) const { return Current().LastRead(data); }
  std::string Identity(int index) const { return Current().Identity(index); }

  // 0 USB, 1 sockets; others change nothing. What the other mode has open is closed.
  void set_mode(int mode);

  // From now on opening and writing fail, and waits for replies end within 600 ms. On any thread.
  void GiveUp();

 private:
  LocalMode& Current() { return usesSockets_ ? static_cast<LocalMode&>(sockets_) : usb_; }
  const LocalMode& Current() const {
    return usesSockets_ ? static_cast<const LocalMode&>(sockets_) : usb_;
  }

  std::atomic<bool> givenUp_{false};
  bool usesSockets_ = false;
  UsbMode usb_;
  SocketMode sockets_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LOCAL_LINK_H_
