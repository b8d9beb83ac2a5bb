#ifndef NUV_CONNECT_USB_MODE_H_
#define NUV_CONNECT_USB_MODE_H_

#include <memory>
#include <string>
#include <vector>

#include "connect/local_mode.h"
#include "transport/connector_base.h"

namespace Nuv::Connect {

// Printers on USB.
class UsbMode final : public LocalMode {
 public:
  explicit UsbMode(std::unique_ptr<ConnectorBase> connector) : connector_(std::move(connector)) {}

  // Replaces `found` by the stored names of the attached printers. False: they could not all be
  // listed.
  bool EnumerateDevices(std::vector<std::string>& found);

  // An open printer is closed first. A negative index is refused.
  bool Open(int index) override;
  void Close() override;
  bool IsOpen() const override { return isOpen_; }
  bool Write(const uint8_t* data, size_t length) override;

 private:
  std::string ReadBlock() override;

  std::unique_ptr<ConnectorBase> connector_;
  bool isOpen_ = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_USB_MODE_H_
