#ifndef NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_
#define NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_

#include <QHostAddress>
#include <QObject>
#include <QTcpSocket>
#include <cstdint>
#include <string>

// Results of Send and Receive.
enum class TcpResult : int32_t {
  kOk = 0,
  kNotConnected = 1,
  kNotSent = 2,     // fewer bytes accepted than given, or not written within 30 s
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
  static constexpr int32_t kReadSliceMs = 600;

  TcpDeviceConnector();
  ~TcpDeviceConnector() override;

  // Connects to `host` (IPv4 or IPv6 address text; a name fails at once), closing an earlier
  // connection first. False when there is no connection within 30 s.
  bool Connect(const std::string& host, uint16_t port);

  // Closes the connection if there is one.
  void Disconnect();

  TcpResult Send(const char* data, int64_t length);

  // Waits for data in slices of 600 ms, `timeoutMs` / 600 of them (none below 600 ms), then takes
  // all that has arrived: a reply still on its way is cut there. `reply` is set only on kOk, which
  // needs `expected` (may be empty) to occur in the text.
  TcpResult Receive(const std::string& expected, std::string& reply, int32_t timeoutMs);

  // Throws away what the printer sent unasked: late or repeated replies to an earlier command.
  void DiscardInput();

 private:
  // All that has arrived; empty when there is nothing, or the printer has closed the connection.
  std::string ReadPending();

  bool IsConnected() const { return socket_->state() == QAbstractSocket::ConnectedState; }

  QTcpSocket* socket_;  // child
};

#endif  // NUV_TRANSPORT_TCP_DEVICE_CONNECTOR_H_
