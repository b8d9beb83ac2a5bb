#include <libudev.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/diagnostics.h"
#include "transport/usb_identity.h"
#include "transport/usb_nodes.h"

namespace Nuv::Transport {

namespace {

struct Unref {
  void operator()(udev* context) const { udev_unref(context); }
  void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
  void operator()(udev_device* device) const { udev_device_unref(device); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

using NumberedNode = std::pair<int, UsbNode>;

std::string OrEmpty(const char* text) { return text != nullptr ? text : ""; }

std::string Attribute(udev_device* device, const char* name) {
  return OrEmpty(udev_device_get_sysattr_value(device, name));
}

int NumberIn(const std::string& text) {
  return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

// Nothing when it is no printer of ours, or has been unplugged since the scan.
std::optional<UsbNode> PrinterOn(udev_device* node) {
  // The parents belong to their child. Of one that is not there all is empty.
  udev_device* const usb = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device");
  udev_device* const interface =
      udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_interface");
  const std::string vendor = Attribute(usb, "idVendor");
  const std::string product = Attribute(usb, "idProduct");
  if (!IsPrinterHardwareId(MakeUsbHardwareId(vendor, product))) return std::nullopt;
  return UsbNode{OrEmpty(udev_device_get_devnode(node)),
                 OrEmpty(udev_device_get_sysname(interface)),
                 vendor + ":" + product + ":" + Attribute(usb, "serial"),
                 {NumberIn(Attribute(usb, "busnum")), NumberIn(Attribute(usb, "devnum"))}};
}

std::vector<NumberedNode> NodesOf(udev* context, udev_enumerate* list) {
  std::vector<NumberedNode> nodes;
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list)) {
    const Owned<udev_device> device(
        udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
    std::optional<UsbNode> node = device ? PrinterOn(device.get()) : std::nullopt;
    if (!node) continue;
    nodes.emplace_back(NumberIn(OrEmpty(udev_device_get_sysnum(device.get()))), std::move(*node));
  }
  return nodes;
}

}  // namespace

std::optional<std::vector<UsbNode>> FindPrinterNodes() {
  const Owned<udev> context(udev_new());
  const Owned<udev_enumerate> list(context ? udev_enumerate_new(context.get()) : nullptr);
  if (!list || udev_enumerate_add_match_subsystem(list.get(), "usbmisc") < 0 ||
      udev_enumerate_add_match_sysname(list.get(), "lp*") < 0 ||
      udev_enumerate_scan_devices(list.get()) < 0) {
    Platform::Diagnostic("USB devices cannot be listed");
    return std::nullopt;
  }
  std::vector<NumberedNode> numbered = NodesOf(context.get(), list.get());
  std::sort(numbered.begin(), numbered.end(),
            [](const NumberedNode& a, const NumberedNode& b) { return a.first < b.first; });
  std::vector<UsbNode> nodes;
  nodes.reserve(numbered.size());
  for (NumberedNode& node : numbered) nodes.push_back(std::move(node.second));
  return nodes;
}

}  // namespace Nuv::Transport
