// One state query beside a bare ping-pong of the same bytes, and beside another protocol library's
// register read. Server and client share one core, so that the figures are processor time.

#include <arpa/inet.h>
#include <modbus.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/bench.h"
#include "nuvconnect/NuvConnect5.h"

namespace bench {
namespace {

constexpr char kRequest[] = "F102\r\n";
constexpr char kReply[] = "F102 OK S:0\r\n";
constexpr char kIdentity[] = "F101 OK V:1 N:bench M:Bench S:B1 C:1\r\n";
constexpr int kWarmUp = 2000;
constexpr int kCalls = 20000;
constexpr int kRounds = 5;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::perror(what);
  std::exit(1);
}

sockaddr_in Address(const char* host, uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  inet_pton(AF_INET, host, &address.sin_addr);
  return address;
}

int Listen(uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address = Address("127.0.0.1", 0);
  Check(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0, "bind");
  Check(listen(listener, 8) == 0, "listen");
  socklen_t size = sizeof address;
  getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  port = ntohs(address.sin_port);
  return listener;
}

void SetNoDelay(int connection) {
  const int one = 1;
  setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

// The barest printer there can be: answers each request as it comes, one client after the other.
void ServeCommands(int listener) {
  while (true) {
    const int connection = accept(listener, nullptr, nullptr);
    SetNoDelay(connection);
    char buffer[256];
    while (true) {
      const ssize_t size = read(connection, buffer, sizeof buffer);
      if (size <= 0) break;
      const bool identity = std::memcmp(buffer, "F101", 4) == 0;
      const char* const reply = identity ? kIdentity : kReply;
      if (write(connection, reply, std::strlen(reply)) < 0) break;
    }
    close(connection);
  }
}

// Bound before the library searches.
int ListenForSearches() {
  const int udp = socket(AF_INET, SOCK_DGRAM, 0);
  const int one = 1;
  setsockopt(udp, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  const sockaddr_in broadcast = Address("10.77.1.255", 6013);
  Check(bind(udp, reinterpret_cast<const sockaddr*>(&broadcast), sizeof broadcast) == 0,
        "bind broadcast (run through ./dev bench)");
  return udp;
}

// Answers the search, so that the library finds the barest printer.
void ServeSearch(int udp, uint16_t tcpPort) {
  char buffer[256];
  sockaddr_in host{};
  while (true) {
    socklen_t size = sizeof host;
    recvfrom(udp, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&host), &size);
    const int length = std::snprintf(
        buffer, sizeof buffer, "F195 OK IP=<127.0.0.1> PORT=%u N=<bench> M:0 CN:1\r\n", tcpPort);
    sendto(udp, buffer, static_cast<size_t>(length), 0, reinterpret_cast<sockaddr*>(&host), size);
  }
}

void ServeRegisters(int listener) {
  modbus_t* const server = modbus_new_tcp("127.0.0.1", 0);
  modbus_mapping_t* const registers = modbus_mapping_new(0, 0, 8, 0);
  while (true) {
    int socket = listener;
    modbus_tcp_accept(server, &socket);
    uint8_t query[MODBUS_TCP_MAX_ADU_LENGTH];
    for (int size = 0; (size = modbus_receive(server, query)) != -1;) {
      modbus_reply(server, query, size, registers);
    }
  }
}

int ConnectTo(uint16_t port) {
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  const sockaddr_in address = Address("127.0.0.1", port);
  Check(connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0,
        "connect");
  SetNoDelay(connection);
  return connection;
}

struct Figures {
  std::vector<double> median;
  std::vector<double> p99;
  void Add(const std::vector<double>& sorted) {
    median.push_back(Quantile(sorted, 0.5));
    p99.push_back(Quantile(sorted, 0.99));
  }
  // The best of the rounds: what disturbs a round is not the code's.
  double Median() const { return *std::min_element(median.begin(), median.end()) / 1000; }
  double P99() const { return *std::min_element(p99.begin(), p99.end()) / 1000; }
};

void ConnectLibrary() {
  char serial[64];
  char* list[] = {serial};
  int count = 1;
  API_Initial();
  Check(API_GetDeviceList(NUV_KIND_NETWORK, list, &count, 63, 100) == NUV_OK, "listing");
  Check(API_ChooseDevice(NUV_KIND_NETWORK, 0) == NUV_OK, "choosing");
}

}  // namespace

void RunStatus() {
  std::printf("State query over loopback TCP, both processes on one core\n");
  PinToOneCore();
  uint16_t port = 0;
  uint16_t modbusPort = 0;
  const int listener = Listen(port);
  const int modbusListener = Listen(modbusPort);
  // One server process for each client: a printer serves one at a time.
  uint16_t bare = 0;
  const int bareListener = Listen(bare);
  const Child printer([&] { ServeCommands(listener); });
  const Child pingPong([&] { ServeCommands(bareListener); });
  const int searchListener = ListenForSearches();
  const Child search([&] { ServeSearch(searchListener, port); });
  const Child modbus([&] { ServeRegisters(modbusListener); });
  close(listener);
  close(bareListener);
  close(modbusListener);
  close(searchListener);

  ConnectLibrary();
  const int connection = ConnectTo(bare);
  modbus_t* const client = modbus_new_tcp("127.0.0.1", modbusPort);
  Check(modbus_connect(client) == 0, "modbus");

  int status = -1;
  char buffer[256];
  uint16_t value = 0;
  const auto floorCall = [&] {
    if (write(connection, kRequest, sizeof kRequest - 1) < 0) std::abort();
    if (read(connection, buffer, sizeof buffer) != sizeof kReply - 1) std::abort();
  };
  const auto libraryCall = [&] {
    if (API_GetPrinterStatus(&status) != NUV_OK || status != 0) std::abort();
  };
  const auto modbusCall = [&] {
    if (modbus_read_registers(client, 0, 1, &value) != 1) std::abort();
  };

  Figures floor, library, registers;
  for (const auto& call : {std::function<void()>(floorCall), {libraryCall}, {modbusCall}}) {
    Sample(kWarmUp, call);
  }
  for (int round = 0; round < kRounds; ++round) {
    floor.Add(Sample(kCalls, floorCall));
    library.Add(Sample(kCalls, libraryCall));
    registers.Add(Sample(kCalls, modbusCall));
  }
  Report("floor: bare ping-pong, median", floor.Median(), "us");
  Report("floor: bare ping-pong, 99th percentile", floor.P99(), "us");
  Report("libmodbus register read, median", registers.Median(), "us");
  Report("libmodbus register read, 99th percentile", registers.P99(), "us");
  Report("API_GetPrinterStatus, median", library.Median(), "us");
  Report("API_GetPrinterStatus, 99th percentile", library.P99(), "us");
  Report("median over floor", library.Median() / floor.Median(), "times", 1.5);
  Report("99th percentile over floor", library.P99() / floor.P99(), "times", 3);
  API_Close();
  modbus_close(client);
  modbus_free(client);
  close(connection);
  Unpin();
}

}  // namespace bench
