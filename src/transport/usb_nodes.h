#ifndef NUV_TRANSPORT_USB_NODES_H_
#define NUV_TRANSPORT_USB_NODES_H_

#include <optional>
#include <string>
#include <vector>

namespace Nuv::Transport {

// One plugging in of a device: the bus counts its devices on.
struct UsbAddress {
  int bus = 0;
  int device = 0;
  bool operator==(const UsbAddress& other) const {
    return bus == other.bus && device == other.device;
  }
};

// A printer's device node.
struct UsbNode {
  std::string path;    // such as /dev/usb/lp0
  std::string port;    // where the cable is plugged in, and the device's interface: 1-4.2:1.0
  std::string device;  // vendor, product and serial number
  UsbAddress address;
};

// The device nodes of the attached printers in the order of their numbers. Nothing when the system
// does not tell. Opens no device.
//
// Thread-safety: safe.
std::optional<std::vector<UsbNode>> FindPrinterNodes();

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_USB_NODES_H_
