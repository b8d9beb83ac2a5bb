#ifndef NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
#define NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "transport/connector_base.h"
#include "transport/usb_nodes.h"

// What the connector asks of the kernel about a device node. Results are those of the system calls,
// with the error as a negative number. Tests stand in for it where no real node can be made to
// behave so.
class DeviceCalls {
 public:
  virtual ~DeviceCalls() = default;
  virtual int Open(const std::string& node) = 0;
  // The device behind an open node; 0 or an error.
  virtual int AddressOf(int fd, UsbAddress& address) = 0;
  virtual int64_t Read(int fd, uint8_t* buffer, size_t size) = 0;
  // No signal ends it.
  virtual int64_t Write(int fd, const uint8_t* data, size_t size) = 0;
  // The events that came, 0 when none did within the time.
  virtual int Poll(int fd, short events, int timeoutMs) = 0;
  virtual void Close(int fd) = 0;
};

// Never blocks but in Poll; lives as long as the process.
DeviceCalls& SystemDeviceCalls();

// Printers on the nodes of the kernel's usblp driver.
//
// Thread-safety: as ConnectorBase.
class UsbConnectorLinux final : public ConnectorBase {
 public:
  // Both outlive the connector.
  explicit UsbConnectorLinux(Nuv::Platform::Clock& clock = Nuv::Platform::SystemClock(),
                             DeviceCalls& calls = SystemDeviceCalls());
  ~UsbConnectorLinux() override;
  UsbConnectorLinux(const UsbConnectorLinux&) = delete;
  UsbConnectorLinux& operator=(const UsbConnectorLinux&) = delete;

  // In the order of the nodes' numbers. Opens no device.
  bool SearchDevices() override;
  // False also for an index outside of the list.
  bool Open(const wchar_t* indexText) override;
  // Throws away a reply that nobody has read.
  void Close() override;
  // A printer that takes no data has its node closed and opened again, so that the driver drops the
  // block: kNotOpen when that fails. The printer may have taken its beginning.
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override;
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override;
  std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) override;
  bool Reopen(bool samePlugging) override;
  LinkState Look() override;
  bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) override;
  uint32_t ReadUnless(const std::function<bool()>& givenUp, uint8_t* buffer,
                      uint32_t timeoutMs) override;
  std::string Identity(size_t index) const override;

 private:
  using Deadline = std::chrono::nanoseconds;

  Deadline DeadlineIn(uint32_t timeoutMs) const;
  // Opens the printer with the port and the identity of `known`, under whatever node it is now.
  bool OpenAgain(const UsbNode& known, bool samePlugging);
  bool OpenNode(const UsbNode& meant);
  // The events of the node, 0 when the deadline has passed.
  int Wait(short events, Deadline deadline);
  // Waits until the driver takes more, which is when it has got rid of what it has.
  uint32_t WaitForOutput(Deadline deadline);
  // Throws input away: until none came for `firstMs`, or for `quietMs` after some. True: some.
  bool Discard(uint32_t firstMs, uint32_t quietMs, Deadline deadline);
  uint32_t WriteBlocks(const uint8_t* data, uint32_t length, Deadline deadline);

  Nuv::Platform::Clock& clock_;
  DeviceCalls& calls_;
  std::vector<UsbNode> nodes_;
  UsbNode opened_;  // last; without a path: none
  int fd_ = -1;
  bool isNew_ = false;  // opened and not yet written to
};

#endif  // NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
