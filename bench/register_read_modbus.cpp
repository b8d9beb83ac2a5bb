#include <modbus.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "bench/register_read.h"
#include "bench/servers.h"

namespace Bench {
namespace {

constexpr uint16_t kPort = 19002;

void Check(bool ok, const char* what) {
  if (ok) return;
  std::fprintf(stderr, "%s: %s\n", what, modbus_strerror(errno));
  std::exit(1);
}

class Client {
 public:
  Client()
      : server_(StartServer(kRegistersPart, kPort)), context_(modbus_new_tcp(kServerHost, kPort)) {
    Check(modbus_connect(context_) == 0, "modbus");
  }
  ~Client() {
    modbus_close(context_);
    modbus_free(context_);
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void Read() {
    uint16_t value = 0;
    if (modbus_read_registers(context_, 0, 1, &value) != 1) std::abort();
  }

 private:
  const Child server_;
  modbus_t* const context_;
};

}  // namespace

void ServeRegisters(uint16_t port) {
  modbus_t* const server = modbus_new_tcp(kServerHost, port);
  modbus_mapping_t* const registers = modbus_mapping_new(0, 0, 8, 0);
  int listener = modbus_tcp_listen(server, 1);
  Check(listener >= 0, "modbus listener");
  std::printf("ready\n");
  std::fflush(stdout);
  while (true) {
    Check(modbus_tcp_accept(server, &listener) >= 0, "modbus client");
    uint8_t query[MODBUS_TCP_MAX_ADU_LENGTH];
    for (int size = 0; (size = modbus_receive(server, query)) != -1;) {
      modbus_reply(server, query, size, registers);
    }
  }
}

std::function<void()> MakeRegisterRead() {
  const auto client = std::make_shared<Client>();
  return [client] { client->Read(); };
}

}  // namespace Bench
