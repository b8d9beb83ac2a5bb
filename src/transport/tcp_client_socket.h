#ifndef NUV_TRANSPORT_TCP_CLIENT_SOCKET_H_
#define NUV_TRANSPORT_TCP_CLIENT_SOCKET_H_

#include <cstdint>
#include <string>

#include "transport/socket_system.h"
#include "transport/tcp_limits.h"

// Plain TCP connection of the local link to one printer.
//
// Thread-safety: none; the channel serialises the calls. All calls block.
class TcpClientSocket {
 public:
  // What Receive reads at most, and what its buffer must hold.
  static constexpr size_t kReadBytes = 512;

  // `waiter` outlives the socket.
  explicit TcpClientSocket(const Nuv::Transport::TcpLimits& limits = {},
                           const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter())
      : limits_(limits), waiter_(waiter) {}
  ~TcpClientSocket() { Close(); }
  TcpClientSocket(const TcpClientSocket&) = delete;
  TcpClientSocket& operator=(const TcpClientSocket&) = delete;

  // Connects to `host` (name or dotted address; empty or "localhost": 127.0.0.1), closing an
  // earlier connection. On failure a line with the system's code goes to the error stream.
  bool Connect(const std::string& host, uint16_t port);

  // 0 when the system took all of `length` bytes in time; -1 otherwise, when closed, and for no
  // bytes. After -1 a part may have been taken; when the connection has ended, it is closed.
  int Send(const char* data, int64_t length);

  // Waits `timeoutMs` / 1000 whole seconds for data and reads once. 0 with `received` bytes in
  // `buffer` (0 of them: the printer has closed the connection); -1 when closed or nothing came.
  int Receive(char* buffer, int timeoutMs, int& received);

  // Whether Receive has something to tell at once, within `timeoutMs`. False when closed.
  bool WaitForInput(int timeoutMs);

  void Close();
  bool IsOpen() const { return socket_ != Nuv::Transport::SocketSystem::kNone; }

 private:
  const Nuv::Transport::TcpLimits limits_;
  const Nuv::Platform::Waiter& waiter_;
  Nuv::Transport::SocketSystem::Handle socket_ = Nuv::Transport::SocketSystem::kNone;
};

#endif  // NUV_TRANSPORT_TCP_CLIENT_SOCKET_H_
