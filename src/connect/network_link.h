#ifndef NUV_CONNECT_NETWORK_LINK_H_
#define NUV_CONNECT_NETWORK_LINK_H_

#include <cstdint>
#include <string>
#include <vector>

#include "connect/link.h"
#include "transport/q_network_lib.h"
#include "transport/search_turn.h"

namespace Nuv::Connect {

// Printers on the network, found by broadcast and reached over TCP.
class NetworkLink final : public Link {
 public:
  // `replyTimeoutMs`: how long a reply is waited for.
  NetworkLink(int replyTimeoutMs, const Platform::Waiter& waiter,
              const Transport::TcpLimits& limits = {})
      : Link(waiter), net_(limits, waiter), replyTimeoutMs_(replyTimeoutMs) {}

  // Waits until a search with the process-wide settings may be made. To be held during
  // EnumerateDevices and CollectReplies, and taken ahead of the channel's lock, which others need
  // while this waits.
  static Transport::SearchTurn WaitForTurn();

  // Searches with the process-wide settings: the printers' addresses.
  std::vector<std::string> EnumerateDevices();

  // The distinct texts that answer a search; the list of EnumerateDevices stays.
  std::vector<std::string> CollectReplies() const;

  // Address and port.
  std::string Identity(int index) const override { return net_.Identity(index); }

  Reason Open(int index) override { return Opening(net_.ConnectByIndex(index)); }
  Reason OpenDevice(const Transport::NetworkDevice& device) {
    rest_.clear();
    return Opening(net_.Connect(device));
  }
  Reason OpenAddress(const std::string& address) { return Opening(net_.ConnectByAddress(address)); }
  Reason Reopen(bool /*job*/) override { return Opening(net_.Reconnect()); }
  void Close() override { net_.Connector().Disconnect(); }
  LinkState Look() override { return net_.Connector().Look(); }
  bool Discard(int quietMs, int limitMs) override;
  bool DiscardInput() override { return Discard(0, 0); }
  Reason Write(const uint8_t* data, size_t length, bool patient) override;
  Reply ReadReply() override;

  // How long the printer's system may leave what was sent unacknowledged until the connection
  // counts as ended, in this connection; 0: as long as this one's likes.
  void LimitSilence(std::chrono::milliseconds limit) { net_.Connector().LimitSilence(limit); }

  // From now on a reply is read to its line feed, however the network cut it; else it is what the
  // first segment brought.
  void ReadWholeLines() { wholeLines_ = true; }

 private:
  bool Receive(std::string& text, int timeoutMs);
  Reply NoReply() { return {{}, Failure(Reason::kSilence)}; }

  QNetworkLib net_;
  const int replyTimeoutMs_;
  bool wholeLines_ = false;
  std::string rest_;  // what came behind the last line
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_NETWORK_LINK_H_
