#ifndef NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
#define NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_

#include <cstddef>
#include <string>
#include <vector>

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
  virtual int AddressOf(int fd, Nuv::Transport::UsbAddress& address) = 0;
  virtual int64_t Read(int fd, uint8_t* buffer, size_t size) = 0;
  // No signal ends it.
  virtual int64_t Write(int fd, const uint8_t* data, size_t size) = 0;
  // The events that are there; does not wait.
  virtual int Poll(int fd, short events) = 0;
  virtual void Close(int fd) = 0;
};

// Never blocks; lives as long as the process.
DeviceCalls& SystemDeviceCalls();

// Printers on the nodes of the kernel's usblp driver.
//
// Thread-safety: as ConnectorBase.
class UsbConnectorLinux final : public ConnectorBase {
 public:
  // `calls` outlives the connector.
  explicit UsbConnectorLinux(DeviceCalls& calls = SystemDeviceCalls()) : calls_(calls) {}
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
  Nuv::Transport::LinkState Look() override;
  bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) override;
  std::string Identity(size_t index) const override;

 private:
  using Deadline = Nuv::Platform::Deadline;

  // Opens `known`, or else, unless `samePlugging`, what was plugged in there since and is the same
  // printer.
  bool OpenAgain(Nuv::Transport::UsbNode known, bool samePlugging);
  // 0 or the system's error; ENODEV when the node has become another device's.
  int OpenNode(const Nuv::Transport::UsbNode& meant);
  // The events of the node that are there.
  int Events(short events);
  // The same once there are any; 0 when the deadline has passed, or nobody waits.
  int Wait(short events, Deadline deadline);
  // Waits until the driver takes more, which is when it has got rid of what it has.
  uint32_t WaitForOutput(Deadline deadline);
  // Throws input away: until none came for `firstMs`, or for `quietMs` after some. True: some.
  bool Discard(uint32_t firstMs, uint32_t quietMs, Deadline deadline);
  uint32_t WriteBlocks(const uint8_t* data, uint32_t length, Deadline deadline);

  DeviceCalls& calls_;
  std::vector<Nuv::Transport::UsbNode> nodes_;
  Nuv::Transport::UsbNode opened_;  // last; without a path: none
  int fd_ = -1;
  bool isNew_ = false;  // opened and not yet written to
};

#endif  // NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
