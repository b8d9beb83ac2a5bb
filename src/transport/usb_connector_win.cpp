#include "transport/usb_connector_win.h"

#include <algorithm>
#include <cwchar>

#include "platform/diagnostics.h"
#include "transport/usb_identity.h"

using namespace Nuv::Transport;

namespace {

// Device interface class of USB printers.
constexpr GUID kUsbPrinterClass = {
    0x28D78FAD, 0x5A12, 0x11D1, {0xAE, 0x5B, 0x00, 0x00, 0xF8, 0x03, 0xA8, 0xC2}};

// How the system tells where a device is plugged in, and when that was.
constexpr DEVPROPKEY kLocationPaths = {
    {0xa45c254e, 0xdf1c, 0x4efd, {0x80, 0x20, 0x67, 0xd1, 0x46, 0xa8, 0x50, 0xe0}}, 37};
constexpr DEVPROPKEY kLastArrival = {
    {0x83da6326, 0x97a6, 0x4088, {0x94, 0x53, 0xa1, 0x92, 0x3f, 0x57, 0x3b, 0x29}}, 102};

// A printer keeps what nobody has read for whoever opens it next.
constexpr uint32_t kQuietMs = 100;
// A reply that came twice is there already.
constexpr uint32_t kExtraReplyMs = 5;
constexpr uint32_t kMostDiscardMs = 2000;

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

bool UsbConnectorWin::SearchDevices() { return Walk(devices_); }

bool UsbConnectorWin::Walk(std::vector<Device>& devices) {
  devices.clear();
  const HDEVINFO set = SetupDiGetClassDevsW(&interfaceClass_, nullptr, nullptr,
                                            DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return false;
  bool walked = true;
  devInfo_.cbSize = sizeof devInfo_;
  for (DWORD member = 0; walked && SetupDiEnumDeviceInfo(set, member, &devInfo_); ++member) {
    const Lookup found = LookUp(set);
    walked =
        found != Lookup::kFailed && (found == Lookup::kOther || AddDevice(set, member, devices));
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

bool UsbConnectorWin::AddDevice(HDEVINFO set, DWORD member, std::vector<Device>& devices) {
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
  devices.push_back({std::wstring(detail->DevicePath) + L"\\1", PropertyOf(set, kLocationPaths),
                     PropertyOf(set, kLastArrival)});
  return true;
}

UsbConnectorWin::Property UsbConnectorWin::PropertyOf(HDEVINFO set, const DEVPROPKEY& key) {
  DEVPROPTYPE type = 0;
  DWORD size = 0;
  SetupDiGetDevicePropertyW(set, &devInfo_, &key, &type, nullptr, 0, &size, 0);
  Property value(size);
  const BOOL read =
      SetupDiGetDevicePropertyW(set, &devInfo_, &key, &type, value.data(), size, &size, 0);
  return read ? value : Property();
}

bool UsbConnectorWin::IsAttached(const Device& device) {
  std::vector<Device> devices;
  const bool walked = Walk(devices);
  return std::find(devices.begin(), devices.end(), device) != devices.end() || !walked;
}

std::vector<std::wstring>& UsbConnectorWin::GetDevicePaths(std::vector<std::wstring>& paths) {
  paths.clear();
  for (const Device& device : devices_) paths.push_back(device.path);
  return paths;
}

bool UsbConnectorWin::Open(const wchar_t* indexText) {
  const long index = std::wcstol(indexText, nullptr, 10);
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return false;
  return OpenAgain(devices_[static_cast<size_t>(index)], false);
}

bool UsbConnectorWin::Reopen(bool samePlugging) {
  if (opened_.path.empty()) return false;
  return Look() == LinkState::kAlive || OpenAgain(opened_, samePlugging);
}

bool UsbConnectorWin::OpenAgain(const Device& known, bool samePlugging) {
  std::vector<Device> devices;
  Walk(devices);
  const auto same = std::find_if(devices.begin(), devices.end(), [&](const Device& device) {
    return device.path == known.path && device.port == known.port &&
           (!samePlugging || device.arrival == known.arrival);
  });
  if (same == devices.end()) {
    Nuv::Platform::Diagnostic("USB printer %ls is not attached any more", known.path.c_str());
    return false;
  }
  return (isOpen_ && !isBroken_ && *same == opened_) || OpenDevice(*same);
}

bool UsbConnectorWin::OpenDevice(const Device& meant) {
  // First, since making them changes the error that a failed opening leaves.
  PrepareEvent(writeOverlapped_);
  PrepareEvent(readOverlapped_);
  HANDLE read = INVALID_HANDLE_VALUE;
  HANDLE write = OpenOverlapped(meant.path, GENERIC_WRITE);
  if (write != INVALID_HANDLE_VALUE) read = OpenOverlapped(meant.path, GENERIC_READ);
  const DWORD error = read != INVALID_HANDLE_VALUE ? ERROR_SUCCESS : GetLastError();
  // Since it was listed, it may have been plugged in anew.
  if (error != ERROR_SUCCESS || !IsAttached(meant)) {
    CloseIfValid(write);
    CloseIfValid(read);
    Nuv::Platform::Diagnostic("USB printer %ls cannot be opened: error %lu", meant.path.c_str(),
                              error);
    return false;
  }
  CloseHandles();
  writeHandle_ = write;
  readHandle_ = read;
  opened_ = meant;
  isOpen_ = true;
  isBroken_ = false;
  listenMs_ = kQuietMs;
  return true;
}

LinkState UsbConnectorWin::Look() {
  if (!isOpen_) return LinkState::kClosed;
  return isBroken_ || !IsAttached(opened_) ? LinkState::kEnded : LinkState::kAlive;
}

std::string UsbConnectorWin::Identity(size_t index) const {
  if (index >= devices_.size()) return {};
  std::string text;
  for (const wchar_t unit : devices_[index].path) text += static_cast<char>(unit);  // ASCII
  for (const Property* property : {&devices_[index].port, &devices_[index].arrival}) {
    text += ' ';
    for (const uint8_t part : *property) text += std::to_string(part) + '.';
  }
  return text;
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
  // what may have come is read away as well.
  PurgeComm(writeHandle_, PURGE_TXCLEAR | PURGE_RXCLEAR);
  PurgeComm(readHandle_, PURGE_TXCLEAR | PURGE_RXCLEAR);
  if (listenMs_ != 0) Discard(listenMs_, kQuietMs, kMostDiscardMs);
  listenMs_ = 0;
  PrepareTransfer(writeOverlapped_);
  PurgeComm(writeHandle_, PURGE_RXCLEAR);
  DWORD written = 0;
  const BOOL started = WriteFile(writeHandle_, data, length, &written, &writeOverlapped_);
  isBroken_ = isBroken_ || (!started && GetLastError() != ERROR_IO_PENDING);
  if (!Finish(started, writeHandle_, writeOverlapped_, timeoutMs)) {
    listenMs_ = kQuietMs;
    return kTransferTimeout;
  }
  if (GetOverlappedResult(writeHandle_, &writeOverlapped_, &written, FALSE)) return 0;
  isBroken_ = true;
  return GetLastError();
}

uint32_t UsbConnectorWin::Read(uint8_t* buffer, uint32_t timeoutMs) {
  if (!isOpen_) return kNotOpen;
  listenMs_ = kQuietMs;
  if (waiter_->Over()) return kTransferTimeout;
  PrepareTransfer(readOverlapped_);
  DWORD received = 0;
  const BOOL started = ReadFile(readHandle_, buffer, kReadBytes, &received, &readOverlapped_);
  isBroken_ = isBroken_ || (!started && GetLastError() != ERROR_IO_PENDING);
  if (!Finish(started, readHandle_, readOverlapped_, timeoutMs)) return kTransferTimeout;
  // A transfer that failed has put nothing into the buffer, which says the same.
  const BOOL done = GetOverlappedResult(readHandle_, &readOverlapped_, &received, FALSE);
  isBroken_ = isBroken_ || !done;
  listenMs_ = kExtraReplyMs;
  return 0;
}

bool UsbConnectorWin::Finish(BOOL started, HANDLE handle, OVERLAPPED& overlapped,
                             uint32_t timeoutMs) {
  if (started) return true;
  if (GetLastError() != ERROR_IO_PENDING) {
    CancelIo(handle);
    return false;
  }
  if (waiter_->Until(waiter_->In(timeoutMs), reinterpret_cast<intptr_t>(overlapped.hEvent),
                     Nuv::Platform::Readiness::kEvent)) {
    return true;
  }
  // Until a cancelled transfer has ended, the system still writes to its buffer and its record. It
  // may have ended by itself meanwhile.
  DWORD moved = 0;
  CancelIo(handle);
  return GetOverlappedResult(handle, &overlapped, &moved, TRUE) != FALSE;
}

bool UsbConnectorWin::DiscardUntilQuiet(uint32_t quietMs, uint32_t limitMs) {
  return isOpen_ && Discard(quietMs, quietMs, limitMs);
}

bool UsbConnectorWin::Discard(uint32_t firstMs, uint32_t quietMs, uint32_t limitMs) {
  const Nuv::Platform::Deadline end = waiter_->In(limitMs);
  uint8_t stale[kReadBytes];
  bool any = false;
  do {
    PrepareTransfer(readOverlapped_);
    DWORD received = 0;
    const BOOL started = ReadFile(readHandle_, stale, kReadBytes, &received, &readOverlapped_);
    if (!Finish(started, readHandle_, readOverlapped_, any ? quietMs : firstMs)) break;
    if (!GetOverlappedResult(readHandle_, &readOverlapped_, &received, FALSE)) break;
    any = any || received > 0;
  } while (waiter_->GetClock().Now() < end);
  return any;
}
