// Reads the input as what a host sends to nuvsim's USB: operations, an import, transfers. The
// printer behind it echoes; the first byte of what it receives chooses what else it does.
#include <asio/io_context.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "fuzz/targets.h"
#include "nuvsim/usb/usbip_session.h"

namespace {

using namespace NuvSim;  // NOLINT(google-build-using-namespace): a program of its own

class Echo final : public Wire {
 public:
  void ClientCame(uint32_t) override { ++clients; }
  void ClientLeft() override { --clients; }
  void AnswerSent() override {}
  Reaction Receive(std::string_view bytes) override {
    Reaction reaction;
    reaction.taken = bytes.size();
    if (bytes.empty()) return reaction;
    reaction.deliveries = {{std::string(bytes)}, {}};
    switch (bytes.front()) {
      case 'c':
        reaction.closing = Closing::kDrop;
        break;
      case 'h':
        reaction.taken = bytes.size() / 2;
        reaction.stall = std::chrono::milliseconds(0);
        break;
      case 'n':
        refuses = true;
        break;
      case 'r':
        reaction.deliveries.back().repeats = true;
        break;
      default:
        break;
    }
    return reaction;
  }
  std::optional<std::chrono::milliseconds> TakeRefusal() override {
    if (!std::exchange(refuses, false)) return std::nullopt;
    return std::chrono::milliseconds(0);
  }

  int clients = 0;
  bool refuses = false;
};

// Of one transfer.
constexpr size_t kMostWanted = size_t{1} << 20;

class Connection final : public UsbipConnection {
 public:
  explicit Connection(const UsbBus& bus) : session_(bus, *this) {}

  // As the server does, but that the host takes its answers at once.
  void Receive(std::string_view bytes) {
    while (isOpen_ && session_.Wanted() <= bytes.size()) {
      const std::string piece(bytes.substr(0, session_.Wanted()));  // its end is the end of a block
      bytes.remove_prefix(piece.size());
      session_.Take(piece);
      Fuzz::Require(session_.Wanted() <= kMostWanted, "a host cannot make the server hold more");
    }
    Abort();
  }

  void Write(std::string message) override {
    // The shortest is the header of an operation.
    Fuzz::Require(message.size() >= kOperationBytes, "an answer is whole");
  }
  void Abort() override {
    session_.Detach();
    isOpen_ = false;
  }
  void EndOnceWritten() override { Abort(); }

 private:
  UsbipSession session_;
  bool isOpen_ = true;
};

}  // namespace

void Fuzz::Usbip(const uint8_t* data, size_t size) {
  static asio::io_context io;  // runs nothing: the printer delays nothing
  Echo wire;
  UsbDevice printer(io, wire, 0, {0x11f1, 0x2601}, "Model", "Serial");
  UsbDevice unplugged(io, wire, 1, {0x11f1, 0x2601}, "Model", "Serial");
  printer.Plug();
  const UsbBus bus({&printer, &unplugged});
  Connection(bus).Receive({reinterpret_cast<const char*>(data), size});
  Require(wire.clients == 0 && !printer.pipe.IsAttached(), "the device is free for others");
  Require(printer.pipe.Pending() == 0, "no transfer outlives its host");
}
