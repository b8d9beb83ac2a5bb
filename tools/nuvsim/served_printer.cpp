#include "nuvsim/served_printer.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>

#include "nuvsim/addresses.h"

namespace NuvSim {
namespace {

constexpr std::chrono::nanoseconds kShortestStep = std::chrono::milliseconds(1);

Dialogue::Log LogOf(const Commons& commons, size_t index) {
  if (!commons.config.log) return {};
  return [&commons, index](bool isReply, std::string_view text) {
    commons.config.log({index, isReply, std::string(text)});
  };
}

}  // namespace

void EventGate::Notify() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++events_;
  }
  changed_.notify_all();
}

bool EventGate::WaitUntil(const std::function<bool()>& predicate,
                          std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    const uint64_t seen = events_;
    lock.unlock();  // the predicate observes printers, whose changes end in Notify()
    if (predicate()) return true;
    lock.lock();
    if (!changed_.wait_until(lock, deadline, [&] { return events_ != seen; })) return false;
  }
}

ServedPrinter::ServedPrinter(Commons& shared, size_t index, const PrinterConfig& config)
    : commons(shared),
      dialogue(config, shared.config.clock, *shared.config.calendarStart, shared.folder.Path(),
               "printer" + std::to_string(index), LogOf(shared, index)),
      address(ParseIpv4(config.address).value_or(0)),
      network(*this, Channel::kNetwork),
      usb(*this, Channel::kUsb),
      endpoint(shared.io, network),
      usbDevice(shared.io, usb, index, *ParseUsbId(config.usbId), config.model, config.serial),
      stepTimer(shared.io) {}

void ServedPrinter::Way::ClientCame(uint32_t at) {
  printer_.commons.Locked([&] { printer_.dialogue.ClientCame(channel_, at); });
  printer_.commons.events.Notify();
}

Reaction ServedPrinter::Way::Receive(std::string_view bytes) {
  Reaction reaction =
      printer_.commons.Locked([&] { return printer_.dialogue.Receive(channel_, bytes); });
  if (reaction.closing == Closing::kGone) printer_.AcceptNoMore();
  printer_.ArmStepTimer();
  printer_.commons.events.Notify();
  return reaction;
}

void ServedPrinter::Way::AnswerSent() {
  printer_.commons.Locked([&] { printer_.dialogue.AnswerSent(); });
  printer_.commons.events.Notify();
}

void ServedPrinter::Way::ClientLeft() {
  printer_.commons.Locked([&] { printer_.dialogue.ClientLeft(channel_); });
  printer_.ArmStepTimer();
  printer_.commons.events.Notify();
}

std::optional<std::chrono::milliseconds> ServedPrinter::Way::TakeRefusal() {
  auto refusal = printer_.commons.Locked([&] { return printer_.dialogue.TakeRefusal(); });
  printer_.commons.events.Notify();
  return refusal;
}

void ServedPrinter::ArmStepTimer() {
  const auto next = commons.Locked([this] { return dialogue.TimeToNextStep(); });
  if (!next) return;
  stepTimer.expires_after(std::max(*next, kShortestStep));
  stepTimer.async_wait([this](const asio::error_code& error) {
    if (error) return;
    ArmStepTimer();
    commons.events.Notify();
  });
}

void ServedPrinter::Plug(uint16_t wantedPort) {
  try {
    endpoint.Listen(address, wantedPort);
  } catch (const std::system_error& error) {
    throw std::runtime_error("cannot listen on " + FormatIpv4(address) + ":" +
                             std::to_string(wantedPort) + ": " + error.code().message());
  }
  usbDevice.Plug();
  commons.Locked([this] {
    port = endpoint.Port();
    plugged = true;
  });
}

void ServedPrinter::Unplug() {
  endpoint.Close();
  usbDevice.Unplug();
  commons.Locked([this] { plugged = false; });
}

void ServedPrinter::AcceptNoMore() {
  endpoint.StopListening();
  usbDevice.Hide();
  commons.Locked([this] { plugged = false; });
}

void ServedPrinter::FaultsCleared() {
  endpoint.FaultsCleared();
  usbDevice.pipe.FaultsCleared();
}

}  // namespace NuvSim
