#include "printer/open_printers.h"

#include "transport/addresses.h"

namespace Nuv::Printer {
namespace {

using Lock = std::lock_guard<std::mutex>;

// As connections are made to it: on the network to a literal address only.
nuv_identity Checked(nuv_identity where) {
  const std::string address = where.address.text;
  const bool known = (where.address.flags & NUV_TEXT_KNOWN) != 0 && !address.empty();
  const bool isUsb = where.link == NUV_LINK_USB;
  const bool isNetwork = where.link == NUV_LINK_NETWORK && where.tcp_port > 0 &&
                         where.tcp_port <= UINT16_MAX &&
                         !Transport::LiteralAddress(address).empty();
  if (!known || !(isUsb || isNetwork)) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "no place where a printer can be: " + address};
  }
  return where;
}

}  // namespace

OpenPrinters& OpenPrinters::Instance() {
  static auto* const kPrinters = new OpenPrinters;
  return *kPrinters;
}

nuv_printer* OpenPrinters::Open(const nuv_identity& where, CallLimits& limits) {
  const auto device =
      std::make_shared<Device>(Checked(where), Platform::SystemClock(), MakeUsbConnector);
  {
    const Lock lock(mutex_);
    std::weak_ptr<Device>& place = places_[device->Place()];
    if (!place.expired()) {
      throw Failure{NUV_RESULT_BUSY, device->Place() + ": this program has it open already"};
    }
    place = device;
  }
  const Session connects(device, limits);
  return handles_.Add(device);
}

std::shared_ptr<Device> OpenPrinters::Get(const nuv_printer* handle) const {
  if (auto device = handles_.Find(handle)) return device;
  throw Failure{NUV_RESULT_BAD_HANDLE, {}};
}

std::shared_ptr<Device> OpenPrinters::At(const nuv_identity& where) const {
  const Lock lock(mutex_);
  const auto found = places_.find(Device::PlaceOf(where));
  return found == places_.end() ? nullptr : found->second.lock();
}

std::shared_ptr<Device> OpenPrinters::Remove(const nuv_printer* handle) {
  auto device = handles_.Remove(handle);
  if (device == nullptr) return nullptr;
  const Lock lock(mutex_);
  places_.erase(device->Place());
  return device;
}

}  // namespace Nuv::Printer
