#ifndef NUV_TRANSPORT_UDP_SEARCH_SOCKET_H_
#define NUV_TRANSPORT_UDP_SEARCH_SOCKET_H_

#include <cstdint>
#include <string>
#include <vector>

#include "platform/waiter.h"
#include "transport/socket_system.h"

// The local link's own search: broadcasts a message and collects the answers.
//
// Thread-safety: none; the channel serialises the calls. All calls block.
class UdpSearchSocket {
 public:
  // `waiter` paces and limits the searches and outlives the socket.
  explicit UdpSearchSocket(const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter())
      : waiter_(waiter) {}
  ~UdpSearchSocket() { Close(); }
  UdpSearchSocket(const UdpSearchSocket&) = delete;
  UdpSearchSocket& operator=(const UdpSearchSocket&) = delete;

  bool Open();
  void Close();

  // Searches every network of the host (see NetworksToSearch), one after the other. On each the
  // search ends when `timeoutMs` (0 or below: 500) pass without an answer, or by SearchBounds. A
  // network that the message cannot be sent to ends the search; the answers until then stay. Does
  // nothing when closed.
  void BroadcastAll(const char* message, int length, uint16_t port, int timeoutMs);

  // Searches the one network of `address` with `netmask` (empty: 255.255.255.255 is asked). 1; 0
  // when closed or the message could not be sent.
  int BroadcastTo(const char* message, int length, const std::string& address,
                  const std::string& netmask, uint16_t port, int timeoutMs);

  // The answers of the last search in order of arrival, duplicates kept, a character per byte.
  const std::vector<std::wstring>& Replies() const { return replies_; }

 private:
  bool IsOpen() const { return socket_ != Nuv::Transport::SocketSystem::kNone; }
  // Searches networks, one after the other. False: nothing was sent, or not to all of them.
  bool Search(const char* message, int length, const std::vector<std::string>& broadcasts,
              uint16_t port, int timeoutMs);
  bool SearchNetwork(const char* message, int length, const std::string& broadcast, uint16_t port,
                     int timeoutMs);

  const Nuv::Platform::Waiter& waiter_;
  Nuv::Transport::SocketSystem::Handle socket_ = Nuv::Transport::SocketSystem::kNone;
  std::vector<std::wstring> replies_;
};

#endif  // NUV_TRANSPORT_UDP_SEARCH_SOCKET_H_
