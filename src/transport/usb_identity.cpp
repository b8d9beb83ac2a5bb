#include "transport/usb_identity.h"

#include <algorithm>
#include <iterator>

namespace Nuv::Transport {

namespace {

// Vendor and product of every printer. Product 2605 is none of them.
constexpr std::wstring_view kPrinterIds[] = {
    L"USB\\VID_0999&PID_BEAF", L"USB\\VID_11F1&PID_2601", L"USB\\VID_11F1&PID_2602",
    L"USB\\VID_11F1&PID_2603", L"USB\\VID_11F1&PID_2604", L"USB\\VID_11F1&PID_2606",
    L"USB\\VID_11F1&PID_2607", L"USB\\VID_11F1&PID_2608", L"USB\\VID_11F1&PID_260A",
    L"USB\\VID_11F1&PID_2620", L"USB\\VID_11F1&PID_2609", L"USB\\VID_11F1&PID_2630",
    L"USB\\VID_11F1&PID_2631",
};
constexpr size_t kIdLength = 21;
static_assert(kPrinterIds[0].size() == kIdLength);

// IDs are ASCII; the host's locale must not change what equals what.
wchar_t Folded(wchar_t c) {
  return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
}

}  // namespace

bool IsPrinterHardwareId(std::wstring_view hardwareId) {
  const std::wstring_view id = hardwareId.substr(0, kIdLength);
  return std::any_of(std::begin(kPrinterIds), std::end(kPrinterIds), [&](std::wstring_view row) {
    return std::equal(row.begin(), row.end(), id.begin(), id.end(),
                      [](wchar_t a, wchar_t b) { return Folded(a) == Folded(b); });
  });
}

std::wstring MakeUsbHardwareId(std::string_view vendor, std::string_view product) {
  std::wstring id = L"USB\\VID_";
  id.append(vendor.begin(), vendor.end()).append(L"&PID_");
  return id.append(product.begin(), product.end());
}

}  // namespace Nuv::Transport
