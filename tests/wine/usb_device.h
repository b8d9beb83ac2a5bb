// A USB printer for Windows programs under Wine, without hardware or driver: the registry says
// that it is attached, and a named pipe takes the place of its driver. The system's own functions
// find it and open it, so a program under test runs as it would on Windows.
//
// All devices lead to the one pipe, so one of them can be open at a time.
#ifndef NUV_TESTS_WINE_USB_DEVICE_H_
#define NUV_TESTS_WINE_USB_DEVICE_H_

#include <windows.h>

#include <deque>
#include <memory>
#include <string>

namespace Wine {

// A device in the registry for as long as the object lives.
class RegisteredDevice {
 public:
  // `vendorAndProduct` as in "VID_11F1&PID_2601"; `hardwareId` the device's own text (empty: it has
  // none). Each object is a plugging in of its own, as the system tells by the time of it.
  RegisteredDevice(const std::wstring& vendorAndProduct, const std::wstring& serial,
                   const std::wstring& hardwareId, const std::wstring& port = L"USB(1)");
  ~RegisteredDevice();
  RegisteredDevice(const RegisteredDevice&) = delete;
  RegisteredDevice& operator=(const RegisteredDevice&) = delete;

  // As the system hands it out.
  const std::wstring& InterfacePath() const { return path_; }

 private:
  std::wstring instanceKey_;
  std::wstring interfaceKey_;
  std::wstring path_;
  HANDLE link_ = nullptr;
};

// The driver's end of the pipe: one instance for a host's write handle, one for its read handle.
//
// Thread-safety: none; one thread makes all calls.
class DevicePipe {
 public:
  DevicePipe();
  ~DevicePipe();
  DevicePipe(const DevicePipe&) = delete;
  DevicePipe& operator=(const DevicePipe&) = delete;

  // Moves what there is to move, without waiting. False once the host has closed its handles; the
  // next call waits for another host.
  bool Receive(std::string& bytes);

  // To the host's read handle. False when the host has closed it.
  bool Send(const std::string& bytes);

  // True while a host has both handles open.
  bool Connected() const { return connected_; }

 private:
  struct End {
    HANDLE pipe = INVALID_HANDLE_VALUE;
    OVERLAPPED overlapped{};
    bool connected = false;
  };

  static void Listen(End& end);
  static bool IsConnected(End& end);
  void ListenAgain();

  // The system gives a host those that have listened longest, so the first two are its handles; the
  // others are for a host that opens the device again before these have been noticed to be closed.
  std::deque<std::unique_ptr<End>> ends_;
  // The handles are told apart by which of them sends.
  size_t sender_ = 0;
  bool connected_ = false;
};

}  // namespace Wine

#endif  // NUV_TESTS_WINE_USB_DEVICE_H_
