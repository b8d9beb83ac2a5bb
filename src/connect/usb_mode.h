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
  // `clock` outlives the mode.
  explicit UsbMode(std::unique_ptr<ConnectorBase> connector,
                   Platform::Clock& clock = Platform::SystemClock())
      : LocalMode(clock), connector_(std::move(connector)) {}

  // Replaces `found` by the stored names of the attached printers. False: they could not all be
  // listed.
  bool EnumerateDevices(std::vector<std::string>& found);

  // A negative index is refused. See ConnectorBase for what becomes of an open printer.
  bool Open(int index) override;
  bool Reopen(bool inJob) override;
  void Close() override { connector_->Close(); }
  bool IsOpen() const override { return connector_->Look() != LinkState::kClosed; }
  LinkState Look() override { return connector_->Look(); }
  bool DiscardUntilQuiet(int quietMs, int limitMs) override;
  bool Write(const uint8_t* data, size_t length) override;
  std::string Identity(int index) const override;

 private:
  std::string ReadBlock(int timeoutMs, const GivenUp& givenUp) override;

  std::unique_ptr<ConnectorBase> connector_;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_USB_MODE_H_
