#ifndef NUV_TRANSPORT_NETWORK_DEVICE_SEARCHER_H_
#define NUV_TRANSPORT_NETWORK_DEVICE_SEARCHER_H_

#include <QByteArray>
#include <QObject>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/waiter.h"
#include "transport/search_addresses.h"

// Finds printers by sending the search message and collecting the answers: by broadcast on every
// IPv4 network of the host, or as the environment variable NUVCONNECT_SEARCH says, which is read at
// each search; ParseSearchAddresses reads it. Without anything in it, it is as if it were not set.
//
// Thread-safety: none; blocks its caller and needs no event loop. One search at a time, since every
// search of the host binds the same port: the caller of Search holds a SearchTurn.
class NetworkDeviceSearcher : public QObject {
 public:
  // `waiter` limits the search and outlives the searcher.
  explicit NetworkDeviceSearcher(const std::string& message, const Nuv::Platform::Waiter& waiter =
                                                                 Nuv::Platform::SystemWaiter());

  // How long a search may last at most: SearchBounds on each network of the host.
  static std::chrono::milliseconds Longest(int timeoutMs);

  // The distinct reply texts in order of first arrival. On each network the search ends when
  // `timeoutMs` (above 0) pass without a datagram, so it lasts that long per network plus the time
  // that the answers take, within SearchBounds. A network that cannot be searched is passed over
  // with a diagnostic.
  std::vector<std::string> Search(uint16_t port, int timeoutMs);

  // Searches all of `whom` at once, `timeoutMs` in all: broadcasts on every network as soon as no
  // other search of the host is under way, which is not waited for first, and addresses. Hands each
  // reply text to `found` as it comes, equal ones once. Asks `goOn` every 20 ms, which may end it;
  // without broadcasts it ends when all have answered.
  void SearchAtOnce(const Nuv::Transport::SearchAddresses& whom, uint16_t port, int timeoutMs,
                    const std::function<bool()>& goOn,
                    const std::function<void(const std::string&)>& found);

  // The broadcast address of each network that is searched.
  static std::vector<std::string> Broadcasts();

  // What NUVCONNECT_SEARCH says now; what cannot be asked is told in one diagnostic. `port`: of
  // addresses without an own one.
  static Nuv::Transport::SearchAddresses AddressesOfEnvironment(
      uint16_t port, const Nuv::Transport::ListBroadcasts& broadcasts);

 private:
  class Replies;

  // An answer counts that is a printer's and comes from where it was asked; a printer behind a
  // router that translates addresses tells one that leads nowhere, so the one asked takes its
  // place.
  void AskAddresses(const std::vector<Nuv::Transport::SearchAddress>& addresses, int timeoutMs,
                    Replies& replies);
  void SearchNetwork(const std::string& broadcast, uint16_t port, int timeoutMs, Replies& replies);

  QByteArray message_;
  const Nuv::Platform::Waiter& waiter_;
};

#endif  // NUV_TRANSPORT_NETWORK_DEVICE_SEARCHER_H_
