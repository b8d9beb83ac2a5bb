#include "transport/q_network_lib.h"

#include "transport/network_device_searcher.h"

using namespace Nuv::Transport;

// Like its connector: no thread of the host owns it.
QNetworkLib::QNetworkLib(const TcpLimits& limits, const Nuv::Platform::Waiter& waiter)
    : waiter_(waiter), connector_(limits, waiter) {
  moveToThread(nullptr);
}

int QNetworkLib::Search(const std::string& message, uint16_t port, int timeoutMs) {
  devices_.clear();
  NetworkDeviceSearcher searcher(message, waiter_);
  for (const std::string& reply : searcher.Search(port, timeoutMs)) {
    NetworkDevice device = ParseDiscoveryReply(reply);
    if (device.valid) devices_.push_back(std::move(device));
  }
  return 0;
}

std::vector<std::string> QNetworkLib::GetDeviceAddresses() const {
  std::vector<std::string> addresses;
  addresses.reserve(devices_.size());
  for (const NetworkDevice& device : devices_) addresses.push_back(device.address);
  return addresses;
}

std::string QNetworkLib::Identity(int index) const {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return {};
  return devices_[static_cast<size_t>(index)].Identity();
}

bool QNetworkLib::ConnectByIndex(int index) {
  if (index < 0 || static_cast<size_t>(index) >= devices_.size()) return false;
  return Connect(devices_[static_cast<size_t>(index)]);
}

bool QNetworkLib::ConnectByAddress(const std::string& address) {
  for (const NetworkDevice& device : devices_) {
    if (device.address == address) return Connect(device);
  }
  return false;
}

bool QNetworkLib::Reconnect() { return current_.valid && Connect(NetworkDevice(current_)); }

bool QNetworkLib::Connect(const NetworkDevice& device) {
  if (!connector_.Connect(device.address, device.port)) return false;
  current_ = device;
  return true;
}
