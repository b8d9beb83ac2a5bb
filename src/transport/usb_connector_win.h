#ifndef NUV_TRANSPORT_USB_CONNECTOR_WIN_H_
#define NUV_TRANSPORT_USB_CONNECTOR_WIN_H_

// The others need the first.
// clang-format off
#include <windows.h>
#include <setupapi.h>
#include <devpropdef.h>
// clang-format on

#include "transport/connector_base.h"

// Printers on USB as Windows lists them, each open as two overlapped handles, so that a write and a
// read may be in flight at once.
//
// Thread-safety: as ConnectorBase. Each direction has a handle, an event and an OVERLAPPED record.
class UsbConnectorWin final : public ConnectorBase {
 public:
  UsbConnectorWin();
  ~UsbConnectorWin() override;
  UsbConnectorWin(const UsbConnectorWin&) = delete;
  UsbConnectorWin& operator=(const UsbConnectorWin&) = delete;

  bool SearchDevices() override;
  // False also for an index outside of the list.
  bool Open(const wchar_t* indexText) override;
  void Close() override;
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override;
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override;
  std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) override;
  bool Reopen(bool samePlugging) override;
  // Asks whether the printer is still listed: the system tells nothing of an open handle.
  Nuv::Transport::LinkState Look() override;
  bool DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) override;
  std::string Identity(size_t index) const override;

 private:
  enum class Lookup { kPrinter, kOther, kFailed };
  using Property = std::vector<uint8_t>;

  struct Device {
    std::wstring path;  // suffixed; it names vendor, product and serial number
    Property port;      // empty: the system does not tell, as of the time
    Property arrival;   // when it was plugged in
    bool operator==(const Device& other) const {
      return path == other.path && port == other.port && arrival == other.arrival;
    }
  };

  // Replaces `devices` by what is attached; false as SearchDevices.
  bool Walk(std::vector<Device>& devices);
  // What the device of `devInfo_` is, by its hardware ID.
  Lookup LookUp(HDEVINFO set);
  // Adds the device of interface `member`. False when it cannot be read.
  bool AddDevice(HDEVINFO set, DWORD member, std::vector<Device>& devices);
  Property PropertyOf(HDEVINFO set, const DEVPROPKEY& key);
  bool IsAttached(const Device& device);

  // Opens `known`, which may have been plugged in anew unless `samePlugging`.
  bool OpenAgain(const Device& known, bool samePlugging);
  bool OpenDevice(const Device& meant);
  void CloseHandles();
  // Waits for a transfer for which `started` was returned. False when it did not start or end in
  // time, or nobody waits.
  bool Finish(BOOL started, HANDLE handle, OVERLAPPED& overlapped, uint32_t timeoutMs);
  // Throws input away: until none came for `firstMs`, or for `quietMs` after some. True: some.
  bool Discard(uint32_t firstMs, uint32_t quietMs, uint32_t limitMs);

  std::vector<Device> devices_;
  GUID interfaceClass_;
  bool isOpen_ = false;
  bool isBroken_ = false;  // a transfer has failed
  uint32_t listenMs_ = 0;  // how long a late reply is listened for before the next write
  Device opened_;          // last; without a path: none
  SP_DEVINFO_DATA devInfo_{};
  SP_DEVICE_INTERFACE_DATA interfaceData_{};
  std::vector<uint8_t> detailBuffer_;
  OVERLAPPED writeOverlapped_{};
  OVERLAPPED readOverlapped_{};
  HANDLE writeHandle_ = INVALID_HANDLE_VALUE;
  HANDLE readHandle_ = INVALID_HANDLE_VALUE;
};

#endif  // NUV_TRANSPORT_USB_CONNECTOR_WIN_H_
