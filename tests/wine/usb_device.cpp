#include "tests/wine/usb_device.h"

#include <winternl.h>

#include <algorithm>
#include <cwctype>
#include <stdexcept>

// Not in the headers of user programs.
extern "C" NTSTATUS NTAPI NtCreateSymbolicLinkObject(PHANDLE link, ACCESS_MASK access,
                                                     POBJECT_ATTRIBUTES attributes,
                                                     PUNICODE_STRING target);

namespace Wine {
namespace {

constexpr wchar_t kPrinterClass[] = L"{28d78fad-5a12-11d1-ae5b-0000f803a8c2}";
// A device without a set-up class is left out of every list.
constexpr wchar_t kUsbSetupClass[] = L"{36fc9e60-c465-11cf-8056-444553540000}";
constexpr wchar_t kSystemKey[] = L"System\\CurrentControlSet\\";
// Where the system keeps when and where a device was plugged in, and as what.
constexpr wchar_t kArrivalKey[] = L"\\Properties\\{83da6326-97a6-4088-9453-a1923f573b29}\\0066";
constexpr wchar_t kPortKey[] = L"\\Properties\\{a45c254e-df1c-4efd-8020-67d146a850e0}\\0025";
constexpr DWORD kPropertyTypes = 0xffff0000;
constexpr DWORD kTypeTime = 0x10;
constexpr DWORD kTypeTexts = 0x2012;
constexpr wchar_t kPipe[] = L"\\\\.\\pipe\\1";
constexpr DWORD kPipeBytes = 65536;
constexpr DWORD kEnds = 8;

void Check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(what);
}

void WriteValue(const std::wstring& key, const wchar_t* name, DWORD type, const void* data,
                size_t bytes) {
  HKEY handle = nullptr;
  Check(RegCreateKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, &handle, nullptr) == ERROR_SUCCESS,
        "registry key");
  const LSTATUS written = RegSetValueExW(handle, name, 0, type, static_cast<const BYTE*>(data),
                                         static_cast<DWORD>(bytes));
  RegCloseKey(handle);
  Check(written == ERROR_SUCCESS, "registry value");
}

void WriteText(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
  WriteValue(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

std::wstring Lower(std::wstring text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
  return text;
}

UNICODE_STRING Counted(std::wstring& text) {
  const auto bytes = static_cast<USHORT>(text.size() * sizeof(wchar_t));
  return {bytes, bytes, text.data()};
}

// The name under which programs open the device leads to the pipes.
HANDLE LinkToPipes(const std::wstring& device) {
  std::wstring name = L"\\??\\" + device;
  std::wstring target = L"\\Device\\NamedPipe";
  UNICODE_STRING countedName = Counted(name);
  UNICODE_STRING countedTarget = Counted(target);
  OBJECT_ATTRIBUTES attributes;
  InitializeObjectAttributes(&attributes, &countedName, OBJ_CASE_INSENSITIVE, nullptr, nullptr);
  HANDLE link = nullptr;
  Check(NtCreateSymbolicLinkObject(&link, GENERIC_ALL, &attributes, &countedTarget) == 0, "link");
  return link;
}

}  // namespace

RegisteredDevice::RegisteredDevice(const std::wstring& vendorAndProduct, const std::wstring& serial,
                                   const std::wstring& hardwareId, const std::wstring& port) {
  const std::wstring instance = L"USB\\" + vendorAndProduct + L"\\" + serial;
  const std::wstring device = L"USB#" + vendorAndProduct + L"#" + serial + L"#" + kPrinterClass;
  path_ = L"\\\\?\\" + Lower(device);
  instanceKey_ = std::wstring(kSystemKey) + L"Enum\\" + instance;
  interfaceKey_ =
      std::wstring(kSystemKey) + L"Control\\DeviceClasses\\" + kPrinterClass + L"\\##?#" + device;
  WriteText(instanceKey_, L"ClassGUID", kUsbSetupClass);
  if (!hardwareId.empty()) {
    const std::wstring list = hardwareId + L'\0';  // c_str adds the list's own NUL
    WriteValue(instanceKey_, L"HardwareID", REG_MULTI_SZ, list.c_str(),
               (list.size() + 1) * sizeof(wchar_t));
  }
  // Later ones have a later time, also within one tick of the clock.
  static DWORD64 pluggings = 0;
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  const DWORD64 arrival = (DWORD64{now.dwHighDateTime} << 32) + now.dwLowDateTime + ++pluggings;
  WriteValue(instanceKey_ + kArrivalKey, nullptr, kPropertyTypes | kTypeTime, &arrival,
             sizeof arrival);
  const std::wstring ports = port + L'\0';
  WriteValue(instanceKey_ + kPortKey, nullptr, kPropertyTypes | kTypeTexts, ports.c_str(),
             (ports.size() + 1) * sizeof(wchar_t));
  WriteText(interfaceKey_, L"DeviceInstance", instance);
  WriteText(interfaceKey_ + L"\\#", L"SymbolicLink", path_);
  const DWORD linked = 1;
  WriteValue(interfaceKey_ + L"\\#\\Control", L"Linked", REG_DWORD, &linked, sizeof linked);
  link_ = LinkToPipes(Lower(device));
}

RegisteredDevice::~RegisteredDevice() {
  CloseHandle(link_);
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, interfaceKey_.c_str());
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, instanceKey_.c_str());
}

DevicePipe::DevicePipe() {
  for (DWORD i = 0; i < kEnds; ++i) {
    auto end = std::make_unique<End>();
    end->pipe = CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                 PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, kEnds, kPipeBytes,
                                 kPipeBytes, 0, nullptr);
    Check(end->pipe != INVALID_HANDLE_VALUE, "named pipe");
    end->overlapped.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    Listen(*end);
    ends_.push_back(std::move(end));
  }
}

DevicePipe::~DevicePipe() {
  for (const auto& end : ends_) {
    CloseHandle(end->pipe);
    CloseHandle(end->overlapped.hEvent);
  }
}

void DevicePipe::Listen(End& end) {
  end.connected =
      ConnectNamedPipe(end.pipe, &end.overlapped) || GetLastError() == ERROR_PIPE_CONNECTED;
}

bool DevicePipe::IsConnected(End& end) {
  if (!end.connected) {
    end.connected = WaitForSingleObject(end.overlapped.hEvent, 0) == WAIT_OBJECT_0;
  }
  return end.connected;
}

void DevicePipe::ListenAgain() {
  connected_ = false;
  for (int i = 0; i < 2; ++i) {
    std::unique_ptr<End> end = std::move(ends_.front());
    ends_.pop_front();
    DisconnectNamedPipe(end->pipe);
    ResetEvent(end->overlapped.hEvent);
    Listen(*end);
    ends_.push_back(std::move(end));
  }
}

bool DevicePipe::Receive(std::string& bytes) {
  bytes.clear();
  connected_ = IsConnected(*ends_[0]) && IsConnected(*ends_[1]);
  for (size_t i = 0; connected_ && i < 2; ++i) {
    End& end = *ends_[i];
    DWORD waiting = 0;
    if (!PeekNamedPipe(end.pipe, nullptr, 0, nullptr, &waiting, nullptr)) {
      ListenAgain();
      return false;
    }
    if (waiting == 0) continue;
    sender_ = i;
    bytes.resize(waiting);
    DWORD count = 0;
    ReadFile(end.pipe, bytes.data(), waiting, nullptr, &end.overlapped);
    GetOverlappedResult(end.pipe, &end.overlapped, &count, TRUE);
    bytes.resize(count);
  }
  return true;
}

bool DevicePipe::Send(const std::string& bytes) {
  End& end = *ends_[1 - sender_];
  DWORD count = 0;
  WriteFile(end.pipe, bytes.data(), static_cast<DWORD>(bytes.size()), nullptr, &end.overlapped);
  return GetOverlappedResult(end.pipe, &end.overlapped, &count, TRUE) && count == bytes.size();
}

}  // namespace Wine
