#include "transport/addresses.h"

#include <QHostAddress>

namespace Nuv::Transport {
namespace {

uint32_t PartToNumber(const std::string& part) {
  uint32_t number = 0;
  for (const char digit : part) {
    if (digit < '0' || digit > '9') return 0;
    number = number * 10 + static_cast<uint32_t>(digit - '0');
  }
  return number;
}

std::string NetmaskOf(const std::string& address, const std::vector<HostInterface>& interfaces) {
  std::string netmask;
  for (const HostInterface& each : interfaces) {
    if (each.address == address) netmask = each.netmask;
  }
  return netmask;
}

}  // namespace

uint32_t DottedToNumber(const std::string& dotted) {
  uint32_t number = 0;
  size_t start = 0;
  while (true) {
    const size_t dot = dotted.find('.', start);
    number = number * 256 + PartToNumber(dotted.substr(start, dot - start));
    if (dot == std::string::npos) return number;
    start = dot + 1;
  }
}

std::string NumberToDotted(uint32_t number) {
  std::string dotted;
  for (int shift = 24; shift >= 0; shift -= 8) {
    dotted += std::to_string((number >> shift) & 0xFFU);
    if (shift > 0) dotted += '.';
  }
  return dotted;
}

std::string DirectedBroadcast(const std::string& address, const std::string& netmask) {
  return NumberToDotted(DottedToNumber(address) | ~DottedToNumber(netmask));
}

bool IsLoopback(const std::string& address) { return DottedToNumber(address) >> 24 == 127; }

std::string LiteralAddress(const std::string& text) {
  return QHostAddress(QString::fromStdString(text)).toString().toStdString();
}

std::vector<HostNetwork> NetworksToSearch(const std::vector<std::string>& hostAddresses,
                                          const std::vector<HostInterface>& interfaces) {
  std::vector<HostNetwork> networks;
  for (const std::string& address : hostAddresses) {
    if (!IsLoopback(address)) networks.push_back({address, NetmaskOf(address, interfaces)});
  }
  if (!networks.empty()) return networks;
  for (const HostInterface& each : interfaces) {
    if (each.running && !each.loopback) networks.push_back({each.address, each.netmask});
  }
  return networks;
}

}  // namespace Nuv::Transport
