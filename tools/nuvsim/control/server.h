// Carries the control language over TCP on 127.0.0.1, to any number of clients.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_CONTROL_SERVER_H_
#define NUVSIM_CONTROL_SERVER_H_

#include <asio/io_context.hpp>
#include <cstdint>
#include <functional>

#include "nuvsim/net/listener.h"
#include "nuvsim/simulator.h"

namespace NuvSim {

class ControlServer {
 public:
  // Listens at once on `port` (0: any free one). `whenQuit` is called when a client has been told
  // that the simulator ends. Throws std::system_error when the port cannot be had.
  ControlServer(asio::io_context& io, uint16_t port, Simulator& simulator,
                const std::function<void()>& whenQuit);

  uint16_t Port() const { return listener_.Port(); }

 private:
  class Client;

  Listener listener_;
};

}  // namespace NuvSim

#endif  // NUVSIM_CONTROL_SERVER_H_
