#ifndef NUV_CONNECT_NETWORK_LINK_H_
#define NUV_CONNECT_NETWORK_LINK_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/interrupt.h"
#include "transport/q_network_lib.h"
#include "transport/search_turn.h"

namespace Nuv::Connect {

// Printers on the network, found by broadcast and reached over TCP.
//
// Thread-safety: none but for GiveUp; the channel serialises the calls.
class NetworkLink {
 public:
  // `replyTimeoutMs`: how long a reply is waited for.
  explicit NetworkLink(int replyTimeoutMs, const TcpLimits& limits = {})
      : net_(limits), replyTimeoutMs_(replyTimeoutMs) {}

  // Waits until a search with the process-wide settings may be made. To be held during
  // EnumerateDevices and CollectReplies, and taken ahead of the channel's lock, which others need
  // while this waits.
  static SearchTurn WaitForTurn();

  // Searches with the process-wide settings; `found`: the printers' addresses.
  bool EnumerateDevices(std::vector<std::string>& found);

  // The distinct texts that answer a search; the list of EnumerateDevices stays.
  std::vector<std::string> CollectReplies() const;

  // Which printer `index` of the last enumeration is: address and port; empty when there is none.
  std::string Identity(int index) const { return net_.Identity(index); }

  bool Open(int index) { return !givesUp_ && net_.ConnectByIndex(index); }
  bool OpenAddress(const std::string& address) {
    return !givesUp_ && net_.ConnectByAddress(address);
  }
  bool Reopen() { return !givesUp_ && net_.Reconnect(); }
  void Close() { net_.Disconnect(); }

  // How the connection stands, without waiting. Throws away what has come, so that an end behind it
  // shows. An end is told until the next opening or Close.
  LinkState Look() { return net_.Look(); }

  // Throws away replies that nobody waits for any more. True when there was any.
  bool DiscardInput() { return net_.DiscardInput(); }

  // As DiscardInput, but waits for more until `quietMs` pass without any, `limitMs` in all.
  bool DiscardUntilQuiet(int quietMs, int limitMs) {
    return net_.DiscardUntilQuiet(quietMs, limitMs);
  }

  // `patient`: a block of an image, see TcpDeviceConnector::Send.
  bool Write(const uint8_t* data, size_t length, bool patient);

  // The next reply; empty when none came in time. `interrupt` (may be null) raised ends the wait
  // within 600 ms.
  std::string ReadReply(Platform::Interrupt* interrupt);

  // From now on, on whatever thread: the wait for a reply ends within 600 ms, opening and writing
  // fail at once, but for a connection being made or a write under way.
  void GiveUp() { givesUp_ = true; }

 private:
  QNetworkLib net_;
  const int replyTimeoutMs_;
  std::atomic<bool> givesUp_{false};
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_NETWORK_LINK_H_
