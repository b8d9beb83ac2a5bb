// Searches by UDP broadcast: hears them on each served network, makes the answers and sends them.
//
// A host on this machine may hold the same port for all addresses and expects unicast answers
// there. So where the system allows, the sockets here are bound to broadcast addresses: they hear
// searches only and can never take an answer away from the host. Elsewhere (Windows) one socket
// hears all, and a search belongs to the network that its sender is on; which of two such sockets
// an answer to this same machine reaches is up to the system.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_NET_SEARCH_H_
#define NUVSIM_NET_SEARCH_H_

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/config.h"
#include "nuvsim/faults/vocabulary.h"
#include "nuvsim/net/interfaces.h"
#include "nuvsim/wire.h"

namespace NuvSim {

// The datagrams that answer `search`, in order, with the faults that apply; the last is the proper
// answer unless a fault replaces or duplicates it. `address` and `port` are where the printer
// accepts connections.
std::vector<Delivery> AnswerSearch(const PrinterConfig& printer, const std::string& address,
                                   uint16_t port, const std::vector<Fault>& faults,
                                   std::string_view search);

class SearchEndpoint {
 public:
  // Given the index of the network, the sender's address and the search, returns the deliveries of
  // each printer that answers. Called on the thread that runs the I/O context.
  using Answerer = std::function<std::vector<std::vector<Delivery>>(size_t network, uint32_t sender,
                                                                    std::string_view)>;

  // Listens at once. `networks` must have distinct broadcast addresses.
  // Throws std::system_error when a socket cannot be had.
  SearchEndpoint(asio::io_context& io, uint16_t port, std::vector<Ipv4Interface> networks,
                 Answerer answerer);
  ~SearchEndpoint();

  void Close();

 private:
  struct Listener;
  struct Sending;

  void Listen(uint32_t address, size_t network);
  void Receive(Listener& listener);
  void Answer(Listener& listener, size_t length);
  void Send(const std::shared_ptr<Sending>& sending);
  void SendNow(const std::shared_ptr<Sending>& sending);
  size_t NetworkOf(uint32_t sender) const;

  asio::io_context& io_;
  uint16_t port_;
  std::vector<Ipv4Interface> networks_;
  Answerer answerer_;
  std::vector<std::unique_ptr<Listener>> listeners_;
};

}  // namespace NuvSim

#endif  // NUVSIM_NET_SEARCH_H_
