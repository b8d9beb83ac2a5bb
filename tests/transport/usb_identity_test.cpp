#include "transport/usb_identity.h"

#include <gtest/gtest.h>

using namespace Nuv::Transport;

namespace {

TEST(UsbIdentityTest, LooksAtTheFirstIdentityOnlyAndIgnoresLetterCase) {
  using namespace std::literals;
  const std::pair<std::wstring_view, bool> rows[] = {
      {L"USB\\VID_0999&PID_BEAF", true},
      {L"USB\\VID_11F1&PID_260A", true},
      {L"USB\\VID_11F1&PID_2631", true},
      {L"usb\\vid_11f1&pid_2601&rev_0100", true},
      {L"USB\\VID_11F1&PID_2601\0USB\\VID_0000&PID_0000"sv, true},
      {L"USB\\VID_11F1&PID_2605", false},  // the gap in the products
      {L"USB\\VID_11F1&PID_2632", false},
      {L"USB\\VID_0999&PID_2601", false},  // another maker's product
      {L"USB\\VID_11F1&PID_260", false},
      {L"", false},
      {L"USB\\VID_0000&PID_0000\0USB\\VID_11F1&PID_2601"sv, false},
      {L" USB\\VID_11F1&PID_2601", false},
  };
  for (const auto& [id, isPrinter] : rows) {
    EXPECT_EQ(IsPrinterHardwareId(id), isPrinter) << std::string(id.begin(), id.end());
  }
}

TEST(UsbIdentityTest, KnowsThirteenProducts) {
  const char digits[] = "0123456789abcdef";
  int known = 0;
  for (const char* vendor : {"11f1", "0999", "1234"}) {
    for (int product = 0; product < 0x10000; ++product) {
      std::string text;
      for (const int shift : {12, 8, 4, 0}) text += digits[(product >> shift) & 15];
      known += IsPrinterHardwareId(MakeUsbHardwareId(vendor, text)) ? 1 : 0;
    }
  }
  EXPECT_EQ(known, 13);
}

}  // namespace
