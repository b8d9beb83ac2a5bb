#ifndef NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_
#define NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_

#include <QObject>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/waiter.h"
#include "transport/link_state.h"
#include "transport/tcp_limits.h"

class QHostAddress;
class QTcpSocket;

// Results of Send and Receive.
enum class TcpResult : int {
  kOk = 0,
  kNotConnected = 1,
  kNotSent = 2,     // fewer bytes accepted than given, or not written in time
  kE35 = 3,         // the expected text is absent and the reply holds the printer's error "E35"
  kNoReply = 4,     // nothing came in time
  kUnexpected = 5,  // the expected text is absent
};

// Command texts to and from one printer over TCP, by blocking calls.
//
// Thread-safety: none, but any thread may make the next call: the socket belongs to no thread, so
// no event loop of the host reads from it, and the channel serialises the calls.
class TcpDeviceConnector : public QObject {
 public:
  // `waiter` outlives the connector.
  explicit TcpDeviceConnector(const Nuv::Transport::TcpLimits& limits = {},
                              const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter());
  ~TcpDeviceConnector() override;

  // Connects to `host` (IPv4 or IPv6 address text; a name fails at once), closing an earlier
  // connection first. False when there is no connection within the limit, or nobody waits for it.
  bool Connect(const std::string& host, uint16_t port);

  // Closes the connection if there is one.
  void Disconnect();

  // Hands `length` bytes to the system; nothing is read meanwhile. What was not written in time
  // leaves a part of a command on the wire, so this side closes the connection. `patient`, for a
  // printer that erases its memory: the rest is kept, with kNotSent, and goes out before the bytes
  // of the next call (which may have none); only a second stall in a row drops the connection.
  TcpResult Send(const char* data, int64_t length, bool patient = false);

  // Waits for data as many whole 600 ms as `timeoutMs` has (below that not at all), then takes all
  // that has arrived, but keeps 64 KiB at most: a reply still on its way is cut there. `reply`
  // is set only on kOk, which needs `expected` (may be empty) to occur in the text.
  TcpResult Receive(const std::string& expected, std::string& reply, int timeoutMs);

  // See SocketSystem::LimitSilence; nothing without a connection.
  void LimitSilence(std::chrono::milliseconds limit);

  // How the connection stands, without waiting. Throws away what has come, so that an end behind it
  // shows. An end is told until the next Connect or Disconnect.
  Nuv::Transport::LinkState Look();

  // Throws away what the printer sent unasked: late or repeated replies to an earlier command.
  // Waits for more until `quietMs` pass without any, `limitMs` in all. True when there was any. A
  // printer that sends without a pause is dropped.
  bool Discard(int quietMs = 0, int limitMs = 0);

 private:
  void MakeSocket();
  bool MakeConnection(const QHostAddress& address, uint16_t port);

  // Where taking what has arrived ends.
  enum class Until {
    kShortRead,  // that took the last of it: saves the read that finds nothing
    kNothing,    // or the printer's end
  };

  // Reads what has arrived: the first `most` bytes to `text`, the rest is thrown away. True when
  // there was any.
  bool Take(std::string& text, size_t most, Until until);

  // Whether there is something to read, or an end, before the deadline.
  bool HasInput(Nuv::Platform::Deadline deadline) const;
  bool IsConnected() const;

  const Nuv::Transport::TcpLimits limits_;
  const Nuv::Platform::Waiter& waiter_;
  std::unique_ptr<QTcpSocket> socket_;
  bool opened_ = false;  // since the last Disconnect
  int stalls_ = 0;       // patient writes in a row that took no byte to their end
};

#endif  // NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_
