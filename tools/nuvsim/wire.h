// What passes between a printer and the endpoints that carry its bytes: bytes in, deliveries out.
#ifndef NUVSIM_WIRE_H_
#define NUVSIM_WIRE_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuvSim {

// One of the two ways to a printer.
enum class Channel : size_t { kNetwork, kUsb };
constexpr size_t kChannels = 2;

// How a connection ends, if the printer ends it.
enum class Closing { kNone, kDrop, kReset, kGone };  // kGone: a drop, and no other client comes

// Bytes to send in one go, `delay` after the delivery before them has been sent. None at all are
// an empty packet over USB, and nothing over the network.
struct Delivery {
  std::string bytes;
  std::chrono::milliseconds delay{0};
  bool repeats = false;  // it is sent again and again until the client is gone
};

// What a printer does in reaction to received bytes: deliveries in order, then the end of the
// connection unless `closing` is kNone.
struct Reaction {
  std::vector<Delivery> deliveries;
  Closing closing = Closing::kNone;
  size_t taken = 0;  // of the bytes; the others come again when the stall is over
  // Nothing more is read for so long; zero: until the faults are cleared.
  std::optional<std::chrono::milliseconds> stall;
};

// What an endpoint sees of its printer.
class Wire {
 public:
  virtual ~Wire() = default;
  // `at`: the own network address that the client has reached; 0 over USB.
  virtual void ClientCame(uint32_t at) = 0;
  virtual Reaction Receive(std::string_view bytes) = 0;
  virtual void AnswerSent() = 0;  // one delivery, whole
  virtual void ClientLeft() = 0;
  // Asked once before each USB transfer is received: how long the printer takes no data; zero:
  // until the faults are cleared; empty: it takes it now.
  virtual std::optional<std::chrono::milliseconds> TakeRefusal() = 0;
};

}  // namespace NuvSim

#endif  // NUVSIM_WIRE_H_
