// What an endpoint sees of its printer: bytes in, deliveries out.
#ifndef NUVSIM_WIRE_H_
#define NUVSIM_WIRE_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "nuvsim/reply_faults.h"

namespace nuvsim {

// One of the two ways to a printer.
enum class Channel : std::size_t { kNetwork, kUsb };
constexpr std::size_t kChannels = 2;

class Wire {
 public:
  virtual ~Wire() = default;
  // `at`: the own network address that the client has reached; 0 over USB.
  virtual void ClientCame(std::uint32_t at) = 0;
  virtual Reaction Receive(std::string_view bytes) = 0;
  virtual void AnswerSent() = 0;  // one delivery, whole
  virtual void ClientLeft() = 0;
  // Asked once before each USB transfer is received: how long the printer takes no data; zero:
  // until the faults are cleared; empty: it takes it now.
  virtual std::optional<std::chrono::milliseconds> TakeRefusal() = 0;
};

}  // namespace nuvsim

#endif  // NUVSIM_WIRE_H_
