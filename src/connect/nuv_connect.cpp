#include "connect/nuv_connect.h"

#include <utility>

#include "connect/search_settings.h"
#include "platform/diagnostics.h"

namespace Nuv::Connect {
namespace {

using Lock = std::lock_guard<std::mutex>;

// When answers are owed, the next request waits until so long nothing came, and so long at most.
constexpr int kQuietMs = 250;
constexpr int kLongestQuietWaitMs = 2000;

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
  return (local_.IsOpen() || leftLocal_) && local_.LastRead(data);
}

bool NuvConnect::ChooseDevice(int kind, int index) {
  const Lock lock(mutex_);
  return Choose(kind, index);
}

bool NuvConnect::Choose(int kind, int index) {
  const bool kept = kind == 0 && index == index_ && IsKeptOpen();
  const bool opened = kind != 0 ? network_.Open(index) : local_.Open(index);
  if (!opened) return false;
  Opened(kind != 0, kept);
  index_ = index;
  return true;
}

void NuvConnect::Opened(bool isNetwork, bool kept) {
  // A printer serves one client: it must not wait for one that has gone to another link. What was
  // read from it stays.
  if (isNetwork && !isNetwork_) {
    leftLocal_ = local_.IsOpen();
    local_.Close();
  } else if (!isNetwork && isNetwork_) {
    network_.Close();
  }
  if (!isNetwork) leftLocal_ = false;
  isNetwork_ = isNetwork;
  if (!kept) ledger_.Reset();
}

bool NuvConnect::IsKeptOpen() { return !isNetwork_ && local_.KeepsOpen(); }

std::string NuvConnect::IdentityOf(int kind, int index) const {
  return kind != 0 ? network_.Identity(index) : local_.Identity(index);
}

std::string NuvConnect::Identity(int kind, int index) {
  const Lock lock(mutex_);
  return IdentityOf(kind, index);
}

bool NuvConnect::ChooseListed(int kind, int index, const std::string& identity) {
  const Lock lock(mutex_);
  const std::string present = IdentityOf(kind, index);
  if (present == identity) return Choose(kind, index);
  Platform::Diagnostic("device %d was listed as %s and is now %s; list again", index,
                       identity.c_str(), present.empty() ? "gone" : present.c_str());
  return false;
}

// The links remember the printer itself: after a new search its old index may stand for another
// printer, on which a job must not go on.
bool NuvConnect::OpenDevice() {
  const Lock lock(mutex_);
  // A USB printer stays open, but not with an answer on its way that nobody waits for. One that has
  // gone is left to the reopening, which in a job must see that.
  if (IsKeptOpen() && ledger_.owes()) local_.Close();
  const bool kept = IsKeptOpen();
  const bool opened = isNetwork_ ? network_.Reopen() : local_.Reopen(job_ != JobKind::kNone);
  if (opened && !kept) ledger_.Reset();
  return opened;
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

std::string NuvConnect::ReceiveReply() { return ReadAgain(nullptr).text; }

std::string NuvConnect::ExecuteCommand(std::string command) {
  return Transact({std::move(command)}).text;
}

Reply NuvConnect::Transact(const Request& request) {
  if (request.line.empty()) return {};
  const Lock lock(mutex_);
  if (!request.again) DiscardStaleInput();
  if (!Write(reinterpret_cast<const uint8_t*>(request.line.data()), request.line.size())) {
    return {{}, Reason(LinkFailure::kNotTaken)};
  }
  ledger_.Asked(request.line);
  return ReadReply(request.interrupt);
}

Reply NuvConnect::ReadAgain(Platform::Interrupt* interrupt) {
  const Lock lock(mutex_);
  return ReadReply(interrupt);
}

// A reply that came too late, or twice, would be taken for the next command's.
void NuvConnect::DiscardStaleInput() {
  if (ledger_.owes() && ledger_.answered()) {
    if (isNetwork_) {
      network_.DiscardUntilQuiet(kQuietMs, kLongestQuietWaitMs);
    } else {
      local_.DiscardUntilQuiet(kQuietMs, kLongestQuietWaitMs);
    }
    ledger_.OweNothing();
  } else if (isNetwork_ && network_.DiscardInput()) {
    ledger_.Discarded();
  }
}

bool NuvConnect::SendBytes(std::vector<uint8_t> bytes) {
  if (bytes.empty()) return false;
  const Lock lock(mutex_);
  ledger_.Wrote(bytes.size());
  return Write(bytes.data(), bytes.size());
}

LinkLook NuvConnect::Look() {
  const Lock lock(mutex_);
  return {State() == LinkState::kAlive, ledger_.unconfirmed()};
}

void NuvConnect::EndJob(bool complete) {
  // The last block of an image may still be queued for a printer that took nothing for a while.
  if (job_.exchange(JobKind::kNone) != JobKind::kImage || !complete) return;
  const Lock lock(mutex_);
  if (isNetwork_) network_.Write(nullptr, 0, true);
}

void NuvConnect::GiveUp() {
  gaveUp_ = true;
  network_.GiveUp();
  local_.GiveUp();
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
  Opened(true, false);
  return true;
}

std::vector<std::string> NuvConnect::CollectBroadcastReplies() {
  const SearchTurn turn = NetworkLink::WaitForTurn();
  const Lock lock(mutex_);
  return network_.CollectReplies();
}

bool NuvConnect::Write(const uint8_t* data, size_t length) {
  return isNetwork_ ? network_.Write(data, length, job_ == JobKind::kImage)
                    : local_.Write(data, length);
}

Reply NuvConnect::ReadReply(Platform::Interrupt* interrupt) {
  std::string line = isNetwork_ ? network_.ReadReply(interrupt) : local_.ReadReply(interrupt);
  ledger_.Answered(line);
  if (!line.empty()) return {WithoutLineFeed(std::move(line))};
  if (interrupt == nullptr || !interrupt->raised()) return {{}, Reason(LinkFailure::kSilence)};
  // The answer is on its way: whoever asks next waits for it.
  ledger_.GiveUp();
  return {{}, LinkFailure::kGivenUp};
}

LinkState NuvConnect::State() { return isNetwork_ ? network_.Look() : local_.Look(); }

LinkFailure NuvConnect::Reason(LinkFailure otherwise) {
  if (gaveUp_) return LinkFailure::kGivenUp;
  switch (State()) {
    case LinkState::kClosed:
      return LinkFailure::kNotOpen;
    case LinkState::kEnded:
      return LinkFailure::kEnded;
    case LinkState::kAlive:
      break;
  }
  return otherwise;
}

}  // namespace Nuv::Connect
