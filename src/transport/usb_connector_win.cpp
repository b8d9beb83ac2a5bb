#include "transport/usb_connector_win.h"

#include <cwchar>

#include "platform/diagnostics.h"
#include "transport/usb_identity.h"

namespace {

// Device interface class of USB printers.
constexpr GUID kUsbPrinterClass = {
    0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};

// The rest of a late reply follows its first packet at once.
constexpr uint32_t kQuietMs = 20;
constexpr int kMostLateBlocks = 128;

HANDLE OpenOverlapped(const std::wstring& path, DWORD access) {
  return CreateFileW(
      path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
      FILE_FLAG_WRITE_THROUGH | FILE_FLAG_OVERLAPPED | FILE_FLAG_NO_BUFFERING, nullptr);
}

// Events are made once and kept by the connector.
void PrepareEvent(OVERLAPPED& overlapped) {
  if (overlapped.hEvent == nullptr) {
    overlapped.hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  }
}

// A transfer that ended while it was being cancelled leaves its event signalled.
void PrepareTransfer(OVERLAPPED& overlapped) {
  overlapped.Offset = 0;
  overlapped.OffsetHigh = 0;
  ResetEvent(overlapped.hEvent);
}

// Until a cancelled transfer has ended, the system still writes to its buffer and its record.
void CancelPending(HANDLE handle, OVERLAPPED& overlapped) {
  DWORD moved = 0;
  CancelIo(handle);
  GetOverlappedResult(handle, &overlapped, &moved, TRUE);
}

// Waits for a transfer for which `started` was returned. False when it did not start or end in
// time.
bool Finish(BOOL started, HANDLE handle, OVERLAPPED& overlapped, uint32_t timeoutMs) {
  if (started) return true;
  if (GetLastError() != ERROR_IO_PENDING) {
    CancelIo(handle);
    return false;
  }
  if (WaitForSingleObject(overlapped.hEvent, timeoutMs) == WAIT_OBJECT_0) return true;
  CancelPending(handle, overlapped);
  return false;
}

void CloseIfValid(HANDLE& handle) {
  if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  handle = INVALID_HANDLE_VALUE;
}

}  // namespace

std::unique_ptr<ConnectorBase> MakeUsbConnector() { return std::make_unique<UsbConnectorWin>(); }

UsbConnectorWin::UsbConnectorWin() : interfaceClass_(kUsbPrinterClass) {}

UsbConnectorWin::~UsbConnectorWin() {
  CloseHandles();
  if (writeOverlapped_.hEvent != nullptr) CloseHandle(writeOverlapped_.hEvent);
  if (readOverlapped_.hEvent != nullptr) CloseHandle(readOverlapped_.hEvent);
}

bool UsbConnectorWin::SearchDevices() {
  devicePaths_.clear();
  deviceCount_ = 0;
  const HDEVINFO set = SetupDiGetClassDevsW(&interfaceClass_, nullptr, nullptr,
                                            DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return false;
  bool walked = true;
  devInfo_.cbSize = sizeof devInfo_;
  for (DWORD member = 0; walked && SetupDiEnumDeviceInfo(set, member, &devInfo_); ++member) {
    const Lookup found = LookUp(set);
    walked = found != Lookup::kFailed && (found == Lookup::kOther || AddPath(set, member));
  }
  SetupDiDestroyDeviceInfoList(set);
  detailBuffer_ = {};
  return walked;
}

UsbConnectorWin::Lookup UsbConnectorWin::LookUp(HDEVINFO set) {
  HLOCAL ids = nullptr;
  DWORD size = 0;
  DWORD required = 0;
  DWORD error = ERROR_SUCCESS;
  while (!SetupDiGetDeviceRegistryPropertyW(set, &devInfo_, SPDRP_HARDWAREID, nullptr,
                                            static_cast<PBYTE>(ids), size, &required)) {
    error = GetLastError();
    if (error != ERROR_INSUFFICIENT_BUFFER) break;
    LocalFree(ids);
    size = required * 2;
    ids = LocalAlloc(LPTR, size);
    error = ids != nullptr ? ERROR_SUCCESS : ERROR_NOT_ENOUGH_MEMORY;
    if (ids == nullptr) break;
  }
  Lookup found = Lookup::kOther;
  if (error == ERROR_SUCCESS) {
    const std::wstring_view text(static_cast<const wchar_t*>(ids), size / sizeof(wchar_t));
    if (IsPrinterHardwareId(text)) found = Lookup::kPrinter;
  } else if (error != ERROR_INVALID_DATA) {  // that one: the device has no hardware ID
    found = Lookup::kFailed;
  }
  LocalFree(ids);
  return found;
}

bool UsbConnectorWin::AddPath(HDEVINFO set, DWORD member) {
  interfaceData_.cbSize = sizeof interfaceData_;
  if (!SetupDiEnumDeviceInterfaces(set, nullptr, &interfaceClass_, member, &interfaceData_)) {
    return false;
  }
  DWORD required = 0;
  SetupDiGetDeviceInterfaceDetailW(set, &interfaceData_, nullptr, 0, &required, nullptr);
  if (required < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_W)) return false;
  detailBuffer_.assign(required, 0);
  auto* const detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_W*>(detailBuffer_.data());
  detail->cbSize = sizeof *detail;
  if (!SetupDiGetDeviceInterfaceDetailW(set, &interfaceData_, detail, required, &required,
                                        &devInfo_)) {
    return false;
  }
  devicePaths_.push_back(std::wstring(detail->DevicePath) + L"\\1");
  ++deviceCount_;
  return true;
}

std::vector<std::wstring>& UsbConnectorWin::GetDevicePaths(std::vector<std::wstring>& paths) {
  paths = devicePaths_;
  return paths;
}

bool UsbConnectorWin::Open(const wchar_t* indexText) {
  if (deviceCount_ == 0) return false;
  const long index = std::wcstol(indexText, nullptr, 10);
  if (index < 0 || static_cast<unsigned long>(index) >= deviceCount_) return false;
  CloseHandles();
  const std::wstring& path = devicePaths_[static_cast<size_t>(index)];
  // First, since making them changes the error that a failed opening leaves.
  PrepareEvent(writeOverlapped_);
  PrepareEvent(readOverlapped_);
  mayComeLate_ = false;
  writeHandle_ = OpenOverlapped(path, GENERIC_WRITE);
  if (writeHandle_ != INVALID_HANDLE_VALUE) readHandle_ = OpenOverlapped(path, GENERIC_READ);
  isOpen_ = readHandle_ != INVALID_HANDLE_VALUE;
  if (!isOpen_) {
    Nuv::Platform::Diagnostic("USB printer %ld cannot be opened: error %lu", index, GetLastError());
  }
  return isOpen_;
}

void UsbConnectorWin::Close() {
  if (isOpen_) CloseHandles();
}

void UsbConnectorWin::CloseHandles() {
  CloseIfValid(writeHandle_);
  CloseIfValid(readHandle_);
  isOpen_ = false;
}

uint32_t UsbConnectorWin::Write(const uint8_t* data, uint32_t length, uint32_t timeoutMs) {
  if (!isOpen_) return kNotOpen;
  // So that no stale reply is left to be read. Whether the driver takes part is its own affair, so
  // what may have come after a time-out is read away as well.
  PurgeComm(writeHandle_, PURGE_TXCLEAR | PURGE_RXCLEAR);
  PurgeComm(readHandle_, PURGE_TXCLEAR | PURGE_RXCLEAR);
  if (mayComeLate_) ReadLateReply();
  PrepareTransfer(writeOverlapped_);
  PurgeComm(writeHandle_, PURGE_RXCLEAR);
  DWORD written = 0;
  const BOOL started = WriteFile(writeHandle_, data, length, &written, &writeOverlapped_);
  if (!Finish(started, writeHandle_, writeOverlapped_, timeoutMs)) return kTransferTimeout;
  const BOOL done = GetOverlappedResult(writeHandle_, &writeOverlapped_, &written, FALSE);
  return done ? 0 : GetLastError();
}

uint32_t UsbConnectorWin::Read(uint8_t* buffer, uint32_t timeoutMs) {
  if (!isOpen_) return kNotOpen;
  PrepareTransfer(readOverlapped_);
  DWORD received = 0;
  const BOOL started = ReadFile(readHandle_, buffer, kReadBytes, &received, &readOverlapped_);
  if (!Finish(started, readHandle_, readOverlapped_, timeoutMs)) {
    mayComeLate_ = true;
    return kTransferTimeout;
  }
  // A transfer that failed has put nothing into the buffer, which says the same.
  GetOverlappedResult(readHandle_, &readOverlapped_, &received, FALSE);
  return 0;
}

void UsbConnectorWin::ReadLateReply() {
  mayComeLate_ = false;
  uint8_t stale[kReadBytes];
  // A printer that never stops sending must not hold the caller.
  for (int block = 0; block < kMostLateBlocks; ++block) {
    PrepareTransfer(readOverlapped_);
    DWORD received = 0;
    const BOOL started = ReadFile(readHandle_, stale, kReadBytes, &received, &readOverlapped_);
    if (!Finish(started, readHandle_, readOverlapped_, kQuietMs)) return;
    const BOOL done = GetOverlappedResult(readHandle_, &readOverlapped_, &received, FALSE);
    if (!done || received == 0) return;
  }
}
