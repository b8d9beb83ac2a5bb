#ifndef NUV_TRANSPORT_USB_IDENTITY_H_
#define NUV_TRANSPORT_USB_IDENTITY_H_

#include <string>
#include <string_view>

namespace Nuv::Transport {

// Whether `hardwareId` begins with the identity of one of our printers, in any letter case. What
// follows the product (a revision, further IDs behind a zero character) does not count.
//
// Thread-safety: safe, as all functions here.
bool IsPrinterHardwareId(std::wstring_view hardwareId);

// The hardware ID of a device with these IDs, each of four hexadecimal digits in any letter case.
std::wstring MakeUsbHardwareId(std::string_view vendor, std::string_view product);

}  // namespace Nuv::Transport

#endif  // NUV_TRANSPORT_USB_IDENTITY_H_
