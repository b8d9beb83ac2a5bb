#ifndef NUV_TRANSPORT_Q_NETWORK_LIB_H_
#define NUV_TRANSPORT_Q_NETWORK_LIB_H_

#include <QObject>
#include <cstdint>
#include <string>
#include <vector>

#include "transport/discovery_reply.h"
#include "transport/tcp_device_connector.h"

// The printers found on the network, and the connection to one of them.
//
// Thread-safety: none; the channel serialises the calls, which may come from any thread.
class QNetworkLib : public QObject {
 public:
  // `waiter` outlives the object.
  QNetworkLib(const Nuv::Transport::TcpLimits& limits, const Nuv::Platform::Waiter& waiter);

  // Replaces the device list by the printers that answer `message` on UDP `port` (see
  // NetworkDeviceSearcher for `timeoutMs`). Always 0.
  int Search(const std::string& message, uint16_t port, int timeoutMs);

  // The address texts of the device list, in its order.
  std::vector<std::string> GetDeviceAddresses() const;

  // "address:port" of an entry of the device list; empty when there is no such entry.
  std::string Identity(int index) const;

  // Connect to a printer of the list, by position or by its exact address text.
  bool ConnectByIndex(int index);
  bool ConnectByAddress(const std::string& address);

  // Connects to a printer that need not be in the list.
  bool Connect(const Nuv::Transport::NetworkDevice& device);

  // Connects again to the printer of the last successful connection, whatever the list holds now.
  bool Reconnect();

  // The connection.
  TcpDeviceConnector& Connector() { return connector_; }

 private:
  const Nuv::Platform::Waiter& waiter_;
  std::vector<Nuv::Transport::NetworkDevice> devices_;
  TcpDeviceConnector connector_;
  Nuv::Transport::NetworkDevice current_;  // invalid until a connection was made
};

#endif  // NUV_TRANSPORT_Q_NETWORK_LIB_H_
