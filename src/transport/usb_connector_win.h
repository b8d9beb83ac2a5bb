#ifndef NUV_TRANSPORT_USB_CONNECTOR_WIN_H_
#define NUV_TRANSPORT_USB_CONNECTOR_WIN_H_

// The second needs the first.
// clang-format off
#include <windows.h>
#include <setupapi.h>
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
  // False also for an index outside of the list. Handles left from before are closed first.
  bool Open(const wchar_t* indexText) override;
  void Close() override;
  uint32_t Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) override;
  uint32_t Read(uint8_t* buffer, uint32_t timeoutMs) override;
  std::vector<std::wstring>& GetDevicePaths(std::vector<std::wstring>& paths) override;

 private:
  enum class Lookup { kPrinter, kOther, kFailed };

  // What the device of `devInfo_` is, by its hardware ID.
  Lookup LookUp(HDEVINFO set);
  // Adds the path of interface `member`. False when it cannot be read.
  bool AddPath(HDEVINFO set, DWORD member);
  void CloseHandles();
  // Throws away a reply that came after a read had given it up.
  void ReadLateReply();

  std::vector<std::wstring> devicePaths_;
  GUID interfaceClass_;
  uint32_t deviceCount_ = 0;
  bool isOpen_ = false;
  bool mayComeLate_ = false;  // a read has timed out since the last write
  SP_DEVINFO_DATA devInfo_{};
  SP_DEVICE_INTERFACE_DATA interfaceData_{};
  std::vector<uint8_t> detailBuffer_;
  OVERLAPPED writeOverlapped_{};
  OVERLAPPED readOverlapped_{};
  HANDLE writeHandle_ = INVALID_HANDLE_VALUE;
  HANDLE readHandle_ = INVALID_HANDLE_VALUE;
};

#endif  // NUV_TRANSPORT_USB_CONNECTOR_WIN_H_
