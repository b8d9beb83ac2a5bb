#ifndef NUV_CONNECT_NETWORK_LINK_H_
#define NUV_CONNECT_NETWORK_LINK_H_

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "transport/q_network_lib.h"
#include "transport/search_turn.h"

namespace Nuv::Connect {

// Printers on the network, found by broadcast and reached over TCP.
//
// Thread-safety: none but for GiveUpReplies; the channel serialises the calls.
class NetworkLink {
 public:
  // `replyTimeoutMs`: how long a reply is waited for.
  explicit NetworkLink(int replyTimeoutMs) : replyTimeoutMs_(replyTimeoutMs) {}

  // Waits until a search with the process-wide settings may be made. To be held during
  // EnumerateDevices and CollectReplies, and taken ahead of the channel's lock, which others need
  // while this waits.
  static SearchTurn WaitForTurn();

  // Searches with the process-wide settings; `found`: the printers' addresses.
  bool EnumerateDevices(std::vector<std::string>& found);

  // The distinct texts that answer a search; the list of EnumerateDevices stays.
  std::vector<std::string> CollectReplies() const;

  bool Open(int index) { return net_.ConnectByIndex(index); }
  bool OpenAddress(const std::string& address) { return net_.ConnectByAddress(address); }
  bool Reopen() { return net_.Reconnect(); }
  void Close() { net_.Disconnect(); }

  // Throws away replies that nobody waits for any more.
  void DiscardInput() { net_.DiscardInput(); }

  bool Write(const uint8_t* data, size_t length);

  // The next reply; empty when none came in time.
  std::string ReadReply();

  // Ends a ReadReply under way, on whatever thread, and those to come.
  void GiveUpReplies() { givesUp_ = true; }

 private:
  QNetworkLib net_;
  const int replyTimeoutMs_;
  std::atomic<bool> givesUp_{false};
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_NETWORK_LINK_H_
