// USB devices that libudev finds and whose nodes the test serves; needs umockdev-wrapper.
#ifndef NUV_TESTS_TRANSPORT_USB_LAB_H_
#define NUV_TESTS_TRANSPORT_USB_LAB_H_

#include <gtest/gtest.h>
#include <umockdev.h>

#include <map>
#include <set>
#include <string>

#include "transport/usb_nodes.h"

class UsbLab : public ::testing::Test {
 protected:
  void SetUp() override {
    bed_ = umockdev_testbed_new();
    ASSERT_TRUE(umockdev_in_mock_environment()) << "run it through umockdev-wrapper";
  }
  void TearDown() override {
    if (bed_ != nullptr) g_object_unref(bed_);
  }

  // Plugs a device in that gets the node /dev/usb/lpNUMBER, at the port of the same number unless
  // another one is named.
  void Attach(int number, const std::string& vendor, const std::string& product,
              const std::string& serial = "S1", int port = -1) {
    const std::string text = std::to_string(number);
    usb_[number] = "/devices/usb1/1-" + (port < 0 ? text : std::to_string(port));
    const std::string& usb = usb_[number];
    const std::string interface = usb + usb.substr(usb.rfind('/')) + ":1.0";
    const Nuv::Transport::UsbAddress address{1, ++pluggings_};
    const std::string node = "usb/lp" + text;
    // A node can be made once only; the later ones are a name.
    const std::string made = made_.insert(number).second ? "\nN: " + node : "";
    attached["/dev/" + node] = address;
    const std::string lines =
        "P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" + vendor +
        "\\n\nA: idProduct=" + product + "\\n\nA: serial=" + serial +
        "\\n\nA: busnum=1\\n\nA: devnum=" + std::to_string(address.device) +
        "\\n\n\nP: " + interface +
        "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n\nP: " + interface + "/usbmisc/lp" + text +
        made + "\nE: SUBSYSTEM=usbmisc\nE: DEVNAME=/dev/" + node + "\n\n";
    GError* error = nullptr;
    EXPECT_TRUE(umockdev_testbed_add_from_string(bed_, lines.c_str(), &error))
        << (error != nullptr ? error->message : "");
    g_clear_error(&error);
  }

  // Takes the device of this node away; what has it open keeps it.
  void Detach(int number) {
    attached.erase("/dev/usb/lp" + std::to_string(number));
    const std::string usb = "/sys" + usb_[number];
    const std::string interface = usb + usb.substr(usb.rfind('/')) + ":1.0";
    // What it takes away along with a device leaves links behind.
    for (const std::string& device :
         {interface + "/usbmisc/lp" + std::to_string(number), interface, usb}) {
      umockdev_testbed_remove_device(bed_, device.c_str());
    }
  }

  // The printer's end of the node.
  int Far(int number) {
    const std::string node = "/dev/usb/lp" + std::to_string(number);
    return umockdev_testbed_get_dev_fd(bed_, node.c_str());
  }

  std::map<std::string, Nuv::Transport::UsbAddress> attached;  // of each node

 private:
  UMockdevTestbed* bed_ = nullptr;
  std::map<int, std::string> usb_;
  std::set<int> made_;
  int pluggings_ = 0;
};

#endif  // NUV_TESTS_TRANSPORT_USB_LAB_H_
