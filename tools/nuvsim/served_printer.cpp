#include "nuvsim/served_printer.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <system_error>

#include "nuvsim/addresses.h"

namespace nuvsim {
namespace {

constexpr std::chrono::nanoseconds kShortestStep = std::chrono::milliseconds(1);

Dialogue::Log LogOf(const Commons& commons, std::size_t index) {
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
    const std::uint64_t seen = events_;
    lock.unlock();  // the predicate observes printers, whose changes end in Notify()
    if (predicate()) return true;
    lock.lock();
    if (!changed_.wait_until(lock, deadline, [&] { return events_ != seen; })) return false;
  }
}

ServedPrinter::ServedPrinter(Commons& shared, std::size_t index, const PrinterConfig& config)
    : commons(shared),
      dialogue(config, shared.config.clock, *shared.config.calendarStart, shared.folder.Path(),
               "printer" + std::to_string(index), LogOf(shared, index)),
      address(ParseIpv4(config.address).value_or(0)),
      network(*this, Channel::kNetwork),
      usb(*this, Channel::kUsb),
      endpoint(shared.io, network),
      usbDevice(shared.io, usb, index, *ParseUsbId(config.usbId), config.model, config.serial),
      stepTimer(shared.io) {}

void ServedPrinter::Way::ClientCame(std::uint32_t at) {
  printer.commons.Locked([&] { printer.dialogue.ClientCame(channel, at); });
  printer.commons.events.Notify();
}

Reaction ServedPrinter::Way::Receive(std::string_view bytes) {
  Reaction reaction =
      printer.commons.Locked([&] { return printer.dialogue.Receive(channel, bytes); });
  printer.ArmStepTimer();
  printer.commons.events.Notify();
  return reaction;
}

void ServedPrinter::Way::AnswerSent() {
  printer.commons.Locked([&] { printer.dialogue.AnswerSent(); });
  printer.commons.events.Notify();
}

void ServedPrinter::Way::ClientLeft() {
  printer.commons.Locked([&] { printer.dialogue.ClientLeft(channel); });
  printer.ArmStepTimer();
  printer.commons.events.Notify();
}

std::optional<std::chrono::milliseconds> ServedPrinter::Way::TakeRefusal() {
  auto refusal = printer.commons.Locked([&] { return printer.dialogue.TakeRefusal(); });
  printer.commons.events.Notify();
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

void ServedPrinter::Plug(std::uint16_t wantedPort) {
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

void ServedPrinter::FaultsCleared() {
  endpoint.FaultsCleared();
  usbDevice.pipe.FaultsCleared();
}

}  // namespace nuvsim
