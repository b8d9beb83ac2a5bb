#include "nuvsim/usbip_server.h"

#include <algorithm>
#include <asio/ip/address_v4.hpp>
#include <chrono>
#include <utility>

#include "nuvsim/network_interfaces.h"
#include "nuvsim/usbip_session.h"

namespace nuvsim {
namespace {

using asio::ip::tcp;

constexpr std::size_t kMaxSessions = 64;
// Accepting fails for want of descriptors, which may come back.
constexpr std::chrono::milliseconds kAcceptRetry{100};
// The bus's own hub has number 1.
constexpr std::uint32_t kFirstNumber = 2;

tcp::acceptor ListenOn(asio::io_context& io, std::uint32_t address, std::uint16_t port) {
  tcp::acceptor acceptor(io, tcp::v4());
  if (ListenerReusesAddress()) acceptor.set_option(tcp::acceptor::reuse_address(true));
  acceptor.bind(tcp::endpoint(asio::ip::address_v4(address), port));
  acceptor.listen();
  return acceptor;
}

}  // namespace

UsbDevice::UsbDevice(asio::io_context& io, Wire& wire, std::size_t number, UsbId id,
                     const std::string& model, const std::string& serial)
    : pipe(io, wire),
      descriptors(id, model, serial),
      announced_{kFirstNumber + static_cast<std::uint32_t>(number),
                 "1-" + std::to_string(number + 1), id} {}

void UsbDevice::Unplug() {
  isPlugged_ = false;
  if (host_ != nullptr) host_->Ended();
}

void UsbDevice::Attach(UsbHost& host) {
  host_ = &host;
  pipe.Attach(host);
}

void UsbDevice::Detach() {
  host_ = nullptr;
  pipe.Detach();
}

UsbipServer::UsbipServer(asio::io_context& io, std::uint32_t address, std::uint16_t port,
                         std::vector<UsbDevice*> devices)
    : acceptor_(ListenOn(io, address, port)),
      retryTimer_(io),
      devices_(std::move(devices)),
      port_(acceptor_.local_endpoint().port()) {
  Accept();
}

UsbipServer::~UsbipServer() = default;

void UsbipServer::Accept() {
  acceptor_.async_accept([this](const asio::error_code& error, tcp::socket socket) {
    if (!acceptor_.is_open()) return;
    if (error) {
      retryTimer_.expires_after(kAcceptRetry);
      retryTimer_.async_wait([this](const asio::error_code& stopped) {
        if (!stopped) Accept();
      });
      return;
    }
    sessions_.remove_if([](const auto& each) { return each.expired(); });
    if (sessions_.size() < kMaxSessions) {
      auto session = std::make_shared<Session>(std::move(socket), *this);
      sessions_.push_back(session);
      session->Start();
    }
    Accept();
  });
}

void UsbipServer::Close() {
  asio::error_code ignored;
  retryTimer_.cancel();
  acceptor_.close(ignored);
  for (const auto& each : sessions_) {
    if (const auto session = each.lock()) session->Abort();
  }
}

std::string UsbipServer::List() const {
  std::string records;
  std::uint32_t count = 0;
  for (const UsbDevice* each : devices_) {
    if (!each->IsPlugged()) continue;
    records += ListReplyDevice(each->Announced());
    ++count;
  }
  return ListReplyHeader(count) + records;
}

UsbDevice* UsbipServer::Find(std::string_view busId) const {
  const auto found = std::find_if(devices_.begin(), devices_.end(), [busId](const auto* each) {
    return each->IsPlugged() && each->Announced().busId == busId;
  });
  return found == devices_.end() ? nullptr : *found;
}

}  // namespace nuvsim
