// One client of a printer, from its acceptance to its end.
//
// Thread-safety: none; lives on the thread that runs the I/O context.
#ifndef NUVSIM_TCP_CONNECTION_H_
#define NUVSIM_TCP_CONNECTION_H_

#include <asio/error_code.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "nuvsim/tcp_endpoint.h"

namespace nuvsim {

class TcpEndpoint::Connection : public std::enable_shared_from_this<Connection> {
 public:
  // `whenGone` is called once, when the printer is free for the next client.
  Connection(asio::ip::tcp::socket socket, Wire& wire, std::function<void()> whenGone);

  void Start();
  // Ends the connection without calling `whenGone`.
  void Abort();
  void EndStall();

 private:
  void ReadOn();
  void Read();
  void Take();
  void Stall(std::chrono::milliseconds time);
  void SendNext();
  void SendFront();
  void Sent(const asio::error_code& error);
  void EndAsFaulted();
  void DiscardUntilClientCloses();
  void Leave();
  void CloseSocket();

  asio::ip::tcp::socket socket_;
  Wire& wire_;
  std::function<void()> whenGone_;
  asio::steady_timer timer_;  // delays of deliveries, later the limit of discarding
  std::vector<char> buffer_;
  std::string_view untaken_;    // of the buffer, during a stall
  std::deque<Delivery> queue_;  // the front one is being sent
  std::size_t queuedBytes_ = 0;
  Closing closing_ = Closing::kNone;  // once the queue is empty
  bool reading_ = false;
  bool stalled_ = false;
  asio::steady_timer stallTimer_;
  bool sending_ = false;
  bool sendFailed_ = false;
  bool gone_ = false;
};

}  // namespace nuvsim

#endif  // NUVSIM_TCP_CONNECTION_H_
