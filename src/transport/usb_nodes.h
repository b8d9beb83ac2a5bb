#ifndef NUV_TRANSPORT_USB_NODES_H_
#define NUV_TRANSPORT_USB_NODES_H_

#include <optional>
#include <string>
#include <vector>

// The device nodes of the attached printers in the order of their numbers, such as /dev/usb/lp0.
// Nothing when the system does not tell. Opens no device.
//
// Thread-safety: safe.
std::optional<std::vector<std::string>> FindPrinterNodes();

#endif  // NUV_TRANSPORT_USB_NODES_H_
