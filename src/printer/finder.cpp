#include "printer/finder.h"

#include "connect/search_settings.h"
#include "printer/host_call.h"
#include "printer/values.h"
#include "transport/network_device_searcher.h"

namespace Nuv::Printer {
namespace {

using std::chrono::milliseconds;

constexpr int kBothLinks = NUV_LINK_NETWORK | NUV_LINK_USB;
constexpr milliseconds kMoment(20);
constexpr int kUsbKind = 0;  // of devices, to the channel

Failure Invalid(const std::string& what) { return {NUV_RESULT_INVALID_ARGUMENT, what}; }

Transport::SearchAddresses AddressesOf(const char* text, uint16_t port) {
  const auto broadcasts = &NetworkDeviceSearcher::Broadcasts;
  if (text == nullptr) return NetworkDeviceSearcher::AddressesOfEnvironment(port, broadcasts);
  Transport::SearchAddresses whom = Transport::ParseSearchAddresses(text, port, broadcasts);
  if (!whom.notUnderstood.empty()) {
    throw Invalid("\"" + whom.notUnderstood.front() + "\" is no address that can be asked");
  }
  if (!whom.broadcast && whom.asked.empty()) throw Invalid("no address to search");
  return whom;
}

// One search.
class Search {
 public:
  Search(const Wishes& wishes, CallLimits& limits, Platform::Deadline end, Platform::Clock& clock,
         const UsbMaker& makeUsb)
      : wishes_(wishes),
        limits_(limits),
        end_(end),
        clock_(clock),
        askers_(end, clock, makeUsb),
        makeUsb_(makeUsb) {}

  std::vector<nuv_identity> Run() {
    if (wishes_.usb) LookAtUsb();
    if (wishes_.network) LookAtNetworks();
    while (GoesOn() && askers_.Busy() && clock_.Now() < end_) TellOfAsked(kMoment);
    askers_.GiveUp();
    while (GoesOn() && askers_.Busy()) TellOfAsked(kMoment);
    if (limits_.Cancelled()) throw Failure{NUV_RESULT_CANCELLED, {}};
    return std::move(told_);
  }

 private:
  bool GoesOn() const { return wanted_ && !limits_.Cancelled(); }

  void LookAtUsb() {
    std::vector<std::string> paths;
    Connect::NuvConnect(0, makeUsb_(), clock_).EnumerateDevices(kUsbKind, paths);
    for (const std::string& path : paths) Found(IdentityOf(path), std::nullopt);
  }

  void LookAtNetworks() {
    NetworkDeviceSearcher searcher(Connect::kDefaultSearchMessage, waiter_);
    const auto left = std::chrono::duration_cast<milliseconds>(end_ - clock_.Now());
    searcher.SearchAtOnce(
        wishes_.whom, wishes_.udpPort, static_cast<int>(left.count()),
        [this] {
          TellOfAsked(milliseconds(0));
          return GoesOn();
        },
        [this](const std::string& reply) {
          const Transport::NetworkDevice device = Transport::ParseDiscoveryReply(reply);
          if (device.valid) Found(IdentityOf(device), device);
        });
  }

  void Found(const nuv_identity& printer, const std::optional<Transport::NetworkDevice>& device) {
    if (wishes_.addressesOnly) {
      Tell(printer);
    } else {
      askers_.Ask(printer, device);
    }
  }

  void TellOfAsked(milliseconds patience) {
    for (const nuv_identity& printer : askers_.Take(patience)) Tell(printer);
  }

  void Tell(const nuv_identity& printer) {
    if (!GoesOn()) return;
    told_.push_back(printer);
    wanted_ = !wishes_.tell || wishes_.tell(printer);
  }

  const Wishes& wishes_;
  CallLimits& limits_;
  const Platform::Deadline end_;
  Platform::Clock& clock_;
  Platform::Waiter waiter_{clock_};
  Askers askers_;
  const UsbMaker& makeUsb_;
  std::vector<nuv_identity> told_;
  bool wanted_ = true;
};

}  // namespace

Wishes WishesOf(const nuv_search_options* options) {
  const nuv_search_options given = Given(options);
  if ((given.links & ~kBothLinks) != 0) throw Invalid("links that there are not");
  if (given.udp_port < 0 || given.udp_port > UINT16_MAX) throw Invalid("no UDP port");
  Wishes wishes;
  wishes.network = given.links == 0 || (given.links & NUV_LINK_NETWORK) != 0;
  wishes.usb = given.links == 0 || (given.links & NUV_LINK_USB) != 0;
  wishes.udpPort =
      static_cast<uint16_t>(given.udp_port != 0 ? given.udp_port : Connect::kDefaultSearchPort);
  if (wishes.network) wishes.whom = AddressesOf(given.addresses, wishes.udpPort);
  wishes.addressesOnly = given.addresses_only != 0;
  if (given.found != nullptr) {
    wishes.tell = [found = given.found, user = given.user](const nuv_identity& printer) {
      const HostCall call;
      return found(&printer, user) == 1;
    };
  }
  return wishes;
}

std::vector<nuv_identity> Find(const Wishes& wishes, CallLimits& limits, Platform::Deadline end,
                               Platform::Clock& clock, const UsbMaker& makeUsb) {
  return Search(wishes, limits, end, clock, makeUsb).Run();
}

}  // namespace Nuv::Printer
