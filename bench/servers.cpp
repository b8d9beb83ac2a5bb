#include "bench/servers.h"

#include <array>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/udp.hpp>
#include <asio/write.hpp>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/register_read.h"

namespace Bench {
namespace {

using asio::ip::tcp;
using asio::ip::udp;

// The host's end of the first private network, and that network's broadcasts.
constexpr char kHostAddress[] = "10.77.1.1";
constexpr char kBroadcastAddress[] = "10.77.1.255";
constexpr uint16_t kSearchPort = 6013;
constexpr char kIdentity[] = "F101 OK V:1 N:bench M:Bench S:B1 C:1\r\n";

void AnnounceReady() {
  std::printf("ready\n");
  std::fflush(stdout);
}

void AnswerUntilClosed(tcp::socket& client) {
  std::array<char, 256> buffer;
  asio::error_code error;
  while (true) {
    const size_t size = client.read_some(asio::buffer(buffer), error);
    if (error) return;
    const bool identity = std::string_view(buffer.data(), size).substr(0, 4) == "F101";
    asio::write(client, asio::buffer(std::string_view(identity ? kIdentity : kStateReply)), error);
    if (error) return;
  }
}

[[noreturn]] void ServeCommands(uint16_t port) {
  asio::io_context io;
  tcp::acceptor listener(io, tcp::endpoint(asio::ip::make_address_v4(kServerHost), port));
  AnnounceReady();
  while (true) {
    tcp::socket client = listener.accept();
    client.set_option(tcp::no_delay(true));
    AnswerUntilClosed(client);
  }
}

// A library that searches uses the same port, so better the address of broadcasts, which Windows
// refuses.
void ListenForSearches(udp::socket& listener) {
  listener.set_option(udp::socket::reuse_address(true));
  asio::error_code error;
  listener.bind(udp::endpoint(asio::ip::make_address_v4(kBroadcastAddress), kSearchPort), error);
  if (error) listener.bind(udp::endpoint(udp::v4(), kSearchPort));
}

[[noreturn]] void ServeSearch(uint16_t printerPort) {
  asio::io_context io;
  udp::socket listener(io, udp::v4());
  ListenForSearches(listener);
  AnnounceReady();
  const std::string answer = "F195 OK IP=<" + std::string(kServerHost) +
                             "> PORT=" + std::to_string(printerPort) + " N=<bench> M:0 CN:1\r\n";
  while (true) {
    std::array<char, 256> buffer;
    udp::endpoint host;
    listener.receive_from(asio::buffer(buffer), host);
    // A search of the second network would find the same printer again.
    if (host.address().to_string() != kHostAddress) continue;
    listener.send_to(asio::buffer(answer), host);
  }
}

}  // namespace

Child StartServer(const std::string& part, uint16_t port) {
  return Child({OwnProgram(), kServeOption, part, std::to_string(port)});
}

[[noreturn]] void Serve(const std::string& part, uint16_t port) {
  if (part == kCommandsPart) ServeCommands(port);
  if (part == kSearchPart) ServeSearch(port);
  if (part == kRegistersPart) ServeRegisters(port);
  std::fprintf(stderr, "no part %s\n", part.c_str());
  std::exit(2);
}

bool InPrivateNetwork() {
  asio::io_context io;
  udp::socket socket(io, udp::v4());
  asio::error_code error;
  socket.bind(udp::endpoint(asio::ip::make_address_v4(kHostAddress), 0), error);
  return !error;
}

}  // namespace Bench
