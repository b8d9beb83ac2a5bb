#include "connect/nuv_connect.h"

#include "connect/search_settings.h"

namespace Nuv::Connect {
namespace {

using Lock = std::lock_guard<std::mutex>;

// A reply line is handed on without its final line feed; a carriage return before it stays.
std::string WithoutLineFeed(std::string reply) {
  if (!reply.empty() && reply.back() == '\n') reply.pop_back();
  return reply;
}

}  // namespace

NuvConnect::NuvConnect(int replyTimeoutMs, std::unique_ptr<ConnectorBase> usb)
    : local_(std::move(usb)), network_(replyTimeoutMs) {}

NuvConnect::~NuvConnect() {
  local_.Close();
  network_.Close();
}

bool NuvConnect::SearchDevices(std::vector<std::string>& found, std::string a, std::string b,
                               int c) {
  const Lock lock(mutex_);
  return local_.SearchDevices(found, a, b, c);
}

bool NuvConnect::EnumerateDevices(int kind, std::vector<std::string>& found) {
  if (kind != 0) {
    const SearchTurn turn = NetworkLink::WaitForTurn();
    const Lock lock(mutex_);
    return network_.EnumerateDevices(found);
  }
  const Lock lock(mutex_);
  return local_.EnumerateDevices(found);
}

bool NuvConnect::ReadLocalData(std::vector<uint8_t>& data) {
  const Lock lock(mutex_);
  return local_.IsOpen() && local_.LastRead(data);
}

bool NuvConnect::ChooseDevice(int kind, int index) {
  const Lock lock(mutex_);
  return Choose(kind, index);
}

bool NuvConnect::Choose(int kind, int index) {
  const bool opened = kind != 0 ? network_.Open(index) : local_.Open(index);
  if (!opened) return false;
  isNetwork_ = kind != 0;
  index_ = index;
  return true;
}

// The links remember the printer itself: after a new search its old index may stand for another
// printer, on which a job must not go on.
bool NuvConnect::OpenDevice() {
  const Lock lock(mutex_);
  return isNetwork_ ? network_.Reopen() : local_.Reopen(index_);
}

bool NuvConnect::CloseDevice() {
  const Lock lock(mutex_);
  if (isNetwork_) {
    network_.Close();
  } else {
    local_.Close();
  }
  return true;
}

std::string NuvConnect::ReceiveReply() {
  const Lock lock(mutex_);
  return WithoutLineFeed(ReadReply());
}

std::string NuvConnect::ExecuteCommand(std::string command) {
  if (command.empty()) return {};
  const Lock lock(mutex_);
  // A reply that came too late, or twice, would be taken for this command's.
  if (isNetwork_) network_.DiscardInput();
  if (!Write(reinterpret_cast<const uint8_t*>(command.data()), command.size())) return {};
  return WithoutLineFeed(ReadReply());
}

bool NuvConnect::SendBytes(std::vector<uint8_t> bytes) {
  if (bytes.empty()) return false;
  const Lock lock(mutex_);
  return Write(bytes.data(), bytes.size());
}

void NuvConnect::SetLocalOption(int option) {
  const Lock lock(mutex_);
  local_.set_mode(option);
}

void NuvConnect::SetSearchTimeout(int timeoutMs) {
  const Lock lock(mutex_);
  SearchSettings::Instance().set_timeout_ms(timeoutMs);
}

void NuvConnect::SetSearchPort(int port) {
  const Lock lock(mutex_);
  SearchSettings::Instance().set_port(port);
}

void NuvConnect::SetSearchMessage(std::string message) {
  const Lock lock(mutex_);
  SearchSettings::Instance().set_message(message);
}

bool NuvConnect::ConnectAddress(const std::string& address) {
  const Lock lock(mutex_);
  if (!network_.OpenAddress(address)) return false;
  isNetwork_ = true;
  return true;
}

std::vector<std::string> NuvConnect::CollectBroadcastReplies() {
  const SearchTurn turn = NetworkLink::WaitForTurn();
  const Lock lock(mutex_);
  return network_.CollectReplies();
}

bool NuvConnect::Write(const uint8_t* data, size_t length) {
  return isNetwork_ ? network_.Write(data, length) : local_.Write(data, length);
}

std::string NuvConnect::ReadReply() {
  return isNetwork_ ? network_.ReadReply() : local_.ReadReply();
}

}  // namespace Nuv::Connect
