#include <libudev.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/diagnostics.h"
#include "transport/usb_identity.h"
#include "transport/usb_nodes.h"

namespace {

struct Unref {
  void operator()(udev* context) const { udev_unref(context); }
  void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
  void operator()(udev_device* device) const { udev_device_unref(device); }
};
template <class T>
using Owned = std::unique_ptr<T, Unref>;

using NumberedNode = std::pair<unsigned long, std::string>;

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

bool IsPrinter(udev_device* node) {
  // The parent belongs to its child.
  udev_device* const usb = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device");
  if (usb == nullptr) return false;
  return IsPrinterHardwareId(
      MakeUsbHardwareId(OrEmpty(udev_device_get_sysattr_value(usb, "idVendor")),
                        OrEmpty(udev_device_get_sysattr_value(usb, "idProduct"))));
}

std::vector<NumberedNode> NodesOf(udev* context, udev_enumerate* list) {
  std::vector<NumberedNode> nodes;
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list)) {
    const Owned<udev_device> device(
        udev_device_new_from_syspath(context, udev_list_entry_get_name(entry)));
    // Null: unplugged since the scan.
    const char* const node = device ? udev_device_get_devnode(device.get()) : nullptr;
    if (node == nullptr || !IsPrinter(device.get())) continue;
    nodes.emplace_back(std::strtoul(OrEmpty(udev_device_get_sysnum(device.get())), nullptr, 10),
                       node);
  }
  return nodes;
}

}  // namespace

std::optional<std::vector<std::string>> FindPrinterNodes() {
  const Owned<udev> context(udev_new());
  const Owned<udev_enumerate> list(context ? udev_enumerate_new(context.get()) : nullptr);
  if (!list || udev_enumerate_add_match_subsystem(list.get(), "usbmisc") < 0 ||
      udev_enumerate_add_match_sysname(list.get(), "lp*") < 0 ||
      udev_enumerate_scan_devices(list.get()) < 0) {
    Nuv::Platform::Diagnostic("USB devices cannot be listed");
    return std::nullopt;
  }
  std::vector<NumberedNode> numbered = NodesOf(context.get(), list.get());
  std::sort(numbered.begin(), numbered.end());
  std::vector<std::string> nodes;
  nodes.reserve(numbered.size());
  for (NumberedNode& node : numbered) nodes.push_back(std::move(node.second));
  return nodes;
}
