// Plays a router that translates addresses, for one printer behind it: searches and connections
// that come to LISTEN go to TARGET, with the same ports.
// Usage: relay LISTEN TARGET TCP_PORT

#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/write.hpp>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace {

using asio::ip::tcp;
using asio::ip::udp;

constexpr uint16_t kSearchPort = 6013;

void RelaySearches(asio::io_context& io, const asio::ip::address& listen,
                   const asio::ip::address& target) {
  udp::socket near(io, udp::endpoint(listen, kSearchPort));
  udp::socket far(io, udp::v4());
  std::array<char, 2048> datagram;
  for (;;) {
    udp::endpoint host, printer;
    const size_t asked = near.receive_from(asio::buffer(datagram), host);
    far.send_to(asio::buffer(datagram, asked), udp::endpoint(target, kSearchPort));
    const size_t answered = far.receive_from(asio::buffer(datagram), printer);
    near.send_to(asio::buffer(datagram, answered), host);
  }
}

void Relay(tcp::socket& from, tcp::socket& to) {
  std::array<char, 65536> bytes;
  asio::error_code error;
  while (!error) {
    const size_t size = from.read_some(asio::buffer(bytes), error);
    if (!error) asio::write(to, asio::buffer(bytes, size), error);
  }
  to.shutdown(tcp::socket::shutdown_send, error);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  asio::io_context io;
  const auto listen = asio::ip::make_address(argv[1]);
  const auto target = asio::ip::make_address(argv[2]);
  const auto port = static_cast<uint16_t>(std::atoi(argv[3]));
  tcp::acceptor acceptor(io, tcp::endpoint(listen, port));
  std::thread([&] { RelaySearches(io, listen, target); }).detach();
  std::puts("ready");
  std::fflush(stdout);
  for (;;) {
    const auto near = std::make_shared<tcp::socket>(acceptor.accept());
    const auto far = std::make_shared<tcp::socket>(io);
    far->connect(tcp::endpoint(target, port));
    std::thread([near, far] { Relay(*near, *far); }).detach();
    std::thread([near, far] { Relay(*far, *near); }).detach();
  }
}
