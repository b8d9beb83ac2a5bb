// The wireless link and the printer's networks.

#include "nuvsim/addresses.h"
#include "nuvsim/commands/table.h"

namespace NuvSim {
namespace {

constexpr int kWired = 0;
constexpr int kWirelessPort = 1;
constexpr uint32_t kNetmask = 0xffffff00;
constexpr uint32_t kWirelessNetworks = 0x0a000000;  // 10.0.<channel>.0
constexpr uint32_t kHostNumber = 5;

std::string AccessPointFields(const AccessPoint& point, bool isJoined) {
  return std::string("S:") + (isJoined ? "1" : "0") + " C:" + std::to_string(point.channel) +
         " M:" + (point.IsSecured() ? "1" : "0") + " R:" + std::to_string(point.signal) +
         " SSID=<" + point.name + ">";
}

std::string JoinedFields(Machine& machine) {
  const AccessPoint* joined = machine.GetWireless().Joined();
  return joined == nullptr ? "S:0" : AccessPointFields(*joined, true);
}

std::string AccessPointInfo(Machine& machine, const Request& request) {
  if (request.parameters.empty()) return "OK " + JoinedFields(machine);
  const Wireless& wireless = machine.GetWireless();
  const auto name = Behind("S", *request.rest);
  const AccessPoint* point = name ? wireless.Find(*name) : nullptr;
  if (point == nullptr) return "NG";
  return "OK " + AccessPointFields(*point, point == wireless.Joined());
}

// "S1 C<security> D1 SSID=<name> KEY=<key>". Names may hold what the form is made of: a name ends
// at the last possible place, a key at the end of the line.
bool Join(Wireless& wireless, std::string_view form) {
  constexpr std::string_view kKeyFollows = "> KEY=<";
  for (const bool isSecured : {false, true}) {
    const auto names = Behind(isSecured ? "S1 C1 D1 SSID=<" : "S1 C0 D1 SSID=<", form);
    if (!names || names->empty() || names->back() != '>') continue;
    const size_t nameEnd = names->rfind(kKeyFollows);
    if (nameEnd == std::string_view::npos) return false;
    const std::string_view key = names->substr(nameEnd + kKeyFollows.size());
    return wireless.Join(names->substr(0, nameEnd), isSecured, key.substr(0, key.size() - 1));
  }
  return false;
}

std::string JoinOrLeave(Machine& machine, const Request& request) {
  Wireless& wireless = machine.GetWireless();
  if (request.parameters == std::vector<std::string_view>{"S2"}) {
    wireless.Leave();
    return "OK";
  }
  return request.rest && Join(wireless, *request.rest) ? "OK" : "NG";
}

// The gateway is the first address of the network and serves names as well. No address: zeros.
std::string AddressFields(uint32_t address, const std::string& mac) {
  const bool isThere = address != 0;
  const std::string gateway = FormatIpv4(isThere ? (address & kNetmask) + 1 : 0);
  return "IP=" + FormatIpv4(address) + " SUB=" + FormatIpv4(isThere ? kNetmask : 0) +
         " GATE=" + gateway + " DNS1=" + gateway + " DNS2=0.0.0.0 MAC=" + mac;
}

uint32_t WirelessAddress(const Wireless& wireless) {
  if (wireless.Joined() == nullptr) return 0;
  const auto channel = static_cast<uint32_t>(wireless.Joined()->channel);
  return kWirelessNetworks + (channel << 8) + kHostNumber;
}

std::string NetworkReport(Machine& machine, const Request& request) {
  const bool isBare = request.parameters.empty();
  const int inUse = machine.GetWireless().Joined() == nullptr ? kWired : kWirelessPort;
  const int port = isBare ? inUse : OnlyNumber(request, 'S').value_or(-1);
  if (port == kWired) {
    return "OK " + AddressFields(machine.WiredAddress(), machine.Config().mac);
  }
  if (port != kWirelessPort || !machine.GetModel().Has(Feature::kWireless)) return "NG";
  return "OK " +
         AddressFields(WirelessAddress(machine.GetWireless()), machine.Config().wirelessMac) + " " +
         JoinedFields(machine);
}

std::string AccessPoints(Machine& machine, const Request&) {
  std::string answer = "OK";
  for (const AccessPoint& each : machine.GetWireless().InReach()) {
    answer += " SSID=<" + each.name + ">";
  }
  return answer;
}

}  // namespace

const CommandTable& NetworkCommands() {
  static const CommandTable kTable = {
      {190, Feature::kWireless, AccessPointInfo},
      {191, Feature::kWireless, JoinOrLeave},
      {192, Feature::kAll, NetworkReport},
      {198, Feature::kWireless, AccessPoints},
  };
  return kTable;
}

}  // namespace NuvSim
