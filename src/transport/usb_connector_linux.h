#ifndef NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
#define NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "platform/clock.h"
#include "transport/connector_base.h"

// What the connector asks of the kernel about a device node. Results are those of the system calls,
// with the error as a negative number. Tests stand in for it where no real node can be made to
// behave so.
class DeviceCalls {
 public:
  virtual ~DeviceCalls() = default;
  virtual int Open(const std::string& node) = 0;
  virtual int64_t Read(int fd, uint8_t* buffer, size_t size) = 0;
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
  // An open printer is closed first: the driver opens a node only once. False also for an index
  // outside of the list.
  bool Open(const wchar_t* indexText) override;
  // Throws away a reply that nobody has read.
  void Close() override;
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override;
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override;
  std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) override;

 private:
  using Deadline = std::chrono::nanoseconds;

  Deadline DeadlineIn(uint32_t timeoutMs) const;
  // The events of the node, 0 when the deadline has passed.
  int Wait(short events, Deadline deadline);
  // Waits until the driver takes more, which is when it has got rid of what it has.
  uint32_t WaitForOutput(Deadline deadline);
  void DiscardInput(Deadline deadline);
  void Report(const char* action, int error) const;

  Nuv::Platform::Clock& clock_;
  DeviceCalls& calls_;
  std::vector<std::string> nodes_;
  std::string openNode_;
  int fd_ = -1;
};

#endif  // NUV_TRANSPORT_USB_CONNECTOR_LINUX_H_
