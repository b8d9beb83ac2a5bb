// What a host and the simulator's USB bus say to each other over USB/IP, whatever carries it.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_USB_USBIP_SESSION_H_
#define NUVSIM_USB_USBIP_SESSION_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "nuvsim/usb/device.h"
#include "nuvsim/usb/usbip_message.h"

namespace NuvSim {

// The devices, which must outlive this object.
class UsbBus {
 public:
  explicit UsbBus(std::vector<UsbDevice*> devices) : devices_(std::move(devices)) {}

  // The answer that lists the plugged ones.
  std::string List() const;
  // The plugged one of this bus ID, or null.
  UsbDevice* Find(std::string_view busId) const;

 private:
  std::vector<UsbDevice*> devices_;
};

// What carries a session.
class UsbipConnection {
 public:
  virtual ~UsbipConnection() = default;
  virtual void Write(std::string message) = 0;
  // Ends the connection at once.
  virtual void Abort() = 0;
  // Ends it once the host has been told all that is to be told.
  virtual void EndOnceWritten() = 0;
};

// One host: it may ask for the list, and may import one device, which is its own until the
// connection ends.
class UsbipSession final : public UsbHost {
 public:
  // Both must outlive this object.
  UsbipSession(const UsbBus& bus, UsbipConnection& connection)
      : bus_(bus), connection_(connection) {}

  // Takes the next piece of what the host sends, which has exactly so many bytes.
  size_t Wanted() const { return wanted_; }
  void Take(std::string_view bytes) { (this->*next_)(bytes); }

  // The device is free for others. To be called when the connection ends.
  void Detach();

  // The host sees the device disconnected.
  void Ended() override;
  void Completed(uint32_t sequence, size_t length, std::string_view data) override;

 private:
  using Step = void (UsbipSession::*)(std::string_view bytes);

  void GoOn(size_t wanted, Step next);
  void OnOperation(std::string_view bytes);
  void OnImport(std::string_view bytes);
  void OnTransfer(std::string_view bytes);
  void OnSubmit();
  void OnData(std::string_view bytes);
  void AnswerControl();
  void OnUnlink();

  const UsbBus& bus_;
  UsbipConnection& connection_;
  UsbDevice* device_ = nullptr;  // imported
  TransferHeader transfer_;      // being received
  size_t wanted_ = kOperationBytes;
  Step next_ = &UsbipSession::OnOperation;
};

}  // namespace NuvSim

#endif  // NUVSIM_USB_USBIP_SESSION_H_
