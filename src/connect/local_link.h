#ifndef NUV_CONNECT_LOCAL_LINK_H_
#define NUV_CONNECT_LOCAL_LINK_H_

#include <cstdint>
#include <string>
#include <vector>

#include "connect/usb_mode.h"

namespace Nuv::Connect {

// Printers on USB, and the channel's own UDP search, which is not built yet.
//
// Thread-safety: none; the channel serialises the calls.
class LocalLink {
 public:
  // `identification` is sent by the search on the first port; answers come to the second.
  LocalLink(std::string identification, int searchPort, int replyPort,
            std::unique_ptr<ConnectorBase> usb = MakeUsbConnector());

  // The search by UDP, then the answers. False: not made.
  bool SearchDevices(std::vector<std::string>& found, const std::string& address,
                     const std::string& netmask, int timeoutMs);

  // The attached printers. False: they could not be listed.
  bool EnumerateDevices(std::vector<std::string>& found);

  bool Open(int index);
  void Close();
  bool IsOpen() const { return mode_ == kUsb && usb_.IsOpen(); }

  bool Write(const uint8_t* data, size_t length);
  std::string ReadReply();
  bool LastRead(std::vector<uint8_t>& data) const;

  void set_mode(int mode) { mode_ = mode; }
  void set_search_timeout(int timeoutMs) { searchTimeoutMs_ = timeoutMs; }
  void set_search_port(int port) { searchPort_ = port; }
  void set_identification(std::string text) { identification_ = std::move(text); }

 private:
  static constexpr int kUsb = 0;

  UsbMode usb_;
  std::string identification_;
  int searchPort_;
  int replyPort_;
  int searchTimeoutMs_ = 0;
  int mode_ = kUsb;  // 1 sockets
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LOCAL_LINK_H_
