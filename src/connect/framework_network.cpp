// The printer's own network: wireless access points and addresses.

#include "connect/connecting_framework.h"
#include "nuvconnect/ResultCodes.h"

namespace Nuv::Connect {
namespace {

// Forms of command 191.
constexpr char kJoin[] = "1";
constexpr char kLeave[] = "2";

constexpr char kOpenNetwork[] = "0";
constexpr char kSecuredNetwork[] = "1";
constexpr char kAddressByDhcp[] = "1";

// Ports of command 192.
constexpr char kWired[] = "0";
constexpr char kWireless[] = "1";

}  // namespace

int ConnectingFramework::GetApList(std::vector<std::string>& names) {
  names.clear();
  Outcome outcome = Commands().Run(198);
  // By position: all names have the same key.
  if (outcome.result == NUV_OK) names = std::move(outcome.values);
  return outcome.result;
}

int ConnectingFramework::IsconnectedAp(int* connected) {
  return Commands().Read(190, {}, {{"S", connected}});
}

int ConnectingFramework::ConnectAp(std::string name, std::string key) {
  const char* const security = key.empty() ? kOpenNetwork : kSecuredNetwork;
  return Commands()
      .Run(191, {kJoin, security, kAddressByDhcp, std::move(name), std::move(key)})
      .result;
}

int ConnectingFramework::GetApAttribute(std::string name, int* signal, int* security) {
  return Commands().Read(190, {std::move(name)}, {{"R", signal}, {"M", security}});
}

int ConnectingFramework::DisconnectAp() { return Commands().Run(191, {kLeave}).result; }

int ConnectingFramework::GetMacAddressWifi(std::string& mac) {
  return Commands().Read(192, {kWireless}, {{"MAC", &mac}});
}

int ConnectingFramework::GetMacAddressLan(std::string& mac) {
  return Commands().Read(192, {kWired}, {{"MAC", &mac}});
}

}  // namespace Nuv::Connect
