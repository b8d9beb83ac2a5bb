// USB devices that libudev finds and whose nodes the test serves; needs umockdev-wrapper.
#ifndef NUV_TESTS_TRANSPORT_USB_LAB_H_
#define NUV_TESTS_TRANSPORT_USB_LAB_H_

#include <gtest/gtest.h>
#include <umockdev.h>

#include <string>

class UsbLab : public ::testing::Test {
 protected:
  void SetUp() override {
    bed_ = umockdev_testbed_new();
    ASSERT_TRUE(umockdev_in_mock_environment()) << "run it through umockdev-wrapper";
  }
  void TearDown() override {
    if (bed_ != nullptr) g_object_unref(bed_);
  }

  // Attaches a device with a node /dev/usb/lpNUMBER.
  void Attach(int number, const std::string& vendor, const std::string& product) {
    const std::string text = std::to_string(number);
    const std::string usb = "/devices/usb1/1-" + text;
    const std::string interface = usb + "/1-" + text + ":1.0";
    const std::string lines =
        "P: " + usb + "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=" + vendor +
        "\\n\nA: idProduct=" + product + "\\n\n\nP: " + interface +
        "\nE: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n\nP: " + interface + "/usbmisc/lp" + text +
        "\nN: usb/lp" + text + "\nE: SUBSYSTEM=usbmisc\nE: DEVNAME=/dev/usb/lp" + text + "\n\n";
    GError* error = nullptr;
    EXPECT_TRUE(umockdev_testbed_add_from_string(bed_, lines.c_str(), &error))
        << (error != nullptr ? error->message : "");
    g_clear_error(&error);
  }

  // Takes the node away, as unplugging does; what has it open keeps it.
  void Detach(int number) {
    const std::string text = std::to_string(number);
    const std::string name =
        "/sys/devices/usb1/1-" + text + "/1-" + text + ":1.0/usbmisc/lp" + text;
    umockdev_testbed_remove_device(bed_, name.c_str());
  }

  // The printer's end of the node.
  int Far(int number) {
    const std::string node = "/dev/usb/lp" + std::to_string(number);
    return umockdev_testbed_get_dev_fd(bed_, node.c_str());
  }

 private:
  UMockdevTestbed* bed_ = nullptr;
};

#endif  // NUV_TESTS_TRANSPORT_USB_LAB_H_
