#include "nuvsim/control/server.h"

#include <asio/buffer.hpp>
#include <asio/ip/address_v4.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "nuvsim/control/language.h"

namespace NuvSim {
namespace {

using asio::ip::tcp;

constexpr size_t kLongestRequest = size_t{1} << 20;

}  // namespace

// One client: a request line, its answer, the next request line.
class ControlServer::Client : public std::enable_shared_from_this<Client> {
 public:
  Client(tcp::socket socket, Simulator& simulator, std::function<void()> whenQuit)
      : socket_(std::move(socket)), simulator_(simulator), whenQuit_(std::move(whenQuit)) {}

  void Read() {
    asio::async_read_until(
        socket_, asio::dynamic_buffer(received_, kLongestRequest), '\n',
        [self = shared_from_this()](const asio::error_code& error, size_t length) {
          if (!error) self->Answer(length);
        });
  }

 private:
  void Answer(size_t length) {
    const ControlAnswer answer = ControlSimulator(simulator_, received_.substr(0, length));
    received_.erase(0, length);
    line_ = answer.line + "\n";
    asio::async_write(
        socket_, asio::buffer(line_),
        [self = shared_from_this(), quits = answer.quits](const asio::error_code& error, size_t) {
          if (quits) {
            self->whenQuit_();
          } else if (!error) {
            self->Read();
          }
        });
  }

  tcp::socket socket_;
  Simulator& simulator_;
  std::function<void()> whenQuit_;
  std::string received_;
  std::string line_;
};

ControlServer::ControlServer(asio::io_context& io, uint16_t port, Simulator& simulator,
                             const std::function<void()>& whenQuit)
    : listener_(io, [this, &simulator, whenQuit](tcp::socket socket) {
        std::make_shared<Client>(std::move(socket), simulator, whenQuit)->Read();
        listener_.Accept();
      }) {
  listener_.Listen(asio::ip::address_v4::loopback().to_uint(), port);
}

}  // namespace NuvSim
