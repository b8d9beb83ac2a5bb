// The two bulk endpoints of a USB printer: what the host sends goes to the printer in order, what
// the printer delivers goes to the host's reads in order.
//
// Thread-safety: none; every call on the thread that runs the I/O context, or before it runs.
#ifndef NUVSIM_USB_PIPE_H_
#define NUVSIM_USB_PIPE_H_

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "nuvsim/wire.h"

namespace NuvSim {

// The host's end. Must not call the pipe back at once, except that Ended() may call Detach().
class UsbHost {
 public:
  virtual ~UsbHost() = default;
  // A transfer has ended; `length`: bytes transferred; `data`: those for the host.
  virtual void Completed(uint32_t sequence, size_t length, std::string_view data) = 0;
  // The printer is gone from the bus.
  virtual void Ended() = 0;
};

class UsbPipe {
 public:
  // `wire` must outlive this object and the run of `io`.
  UsbPipe(asio::io_context& io, Wire& wire);

  // The host comes and goes. What it leaves pending is forgotten, unread deliveries are lost.
  void Attach(UsbHost& host);
  void Detach();
  bool IsAttached() const { return host_ != nullptr; }

  // Transfers of the host, with numbers of its own.
  void Send(uint32_t sequence, std::string bytes);
  void Read(uint32_t sequence, size_t length);
  // Gives a transfer up; false when it is not pending (any more).
  bool Cancel(uint32_t sequence);
  size_t Pending() const { return sends_.size() + reads_.size(); }

  // Forgets deliveries that have not been read.
  void Reset();
  // A refusal to take data may be over.
  void FaultsCleared();

 private:
  struct PendingSend {
    uint32_t sequence;
    std::string bytes;
    bool isAdmitted = false;  // the printer has been asked whether it takes data
    size_t taken = 0;         // of the bytes; fewer than all during a stall
  };
  struct PendingRead {
    uint32_t sequence;
    size_t length;
  };

  void Advance();
  bool Admits(PendingSend& send);
  void Refuse(std::chrono::milliseconds time);
  bool TakeFrontSend();
  bool DeliverFront();
  bool IsFrontDue();

  Wire& wire_;
  UsbHost* host_ = nullptr;
  std::deque<PendingSend> sends_;
  std::deque<PendingRead> reads_;
  std::deque<Delivery> deliveries_;
  size_t queuedBytes_ = 0;     // of the deliveries
  size_t deliveredBytes_ = 0;  // of the front delivery
  Closing closing_ = Closing::kNone;
  bool isRefusing_ = false;
  bool isStalled_ = false;  // refusing, whatever the host does
  asio::steady_timer refusalTimer_;
  bool isDelaying_ = false;  // the front delivery is not due yet
  bool isFrontDue_ = false;
  asio::steady_timer deliveryTimer_;
};

}  // namespace NuvSim

#endif  // NUVSIM_USB_PIPE_H_
