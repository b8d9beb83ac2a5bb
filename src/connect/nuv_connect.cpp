#include "connect/nuv_connect.h"

#include <algorithm>
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

NuvConnect::NuvConnect(int replyTimeoutMs, std::unique_ptr<ConnectorBase> usb,
                       Platform::Clock& clock)
    : waiter_(clock), local_(std::move(usb), waiter_), network_(replyTimeoutMs, waiter_) {}

bool NuvConnect::SearchDevices(std::vector<std::string>& found, std::string address,
                               std::string netmask, int timeoutMs) {
  const Lock lock(mutex_);
  return local_.sockets.SearchDevices(found, address, netmask, timeoutMs);
}

bool NuvConnect::EnumerateDevices(int kind, std::vector<std::string>& found) {
  if (kind != 0) {
    const Transport::SearchTurn turn = NetworkLink::WaitForTurn();
    const Lock lock(mutex_);
    found = network_.EnumerateDevices();
    return true;
  }
  const Lock lock(mutex_);
  return local_.usb.EnumerateDevices(found);
}

bool NuvConnect::ReadLocalData(std::vector<uint8_t>& data) {
  const Lock lock(mutex_);
  LocalLink& local = local_.Current();
  return (local.IsOpen() || leftLocal_) && local.LastRead(data);
}

bool NuvConnect::ChooseDevice(int kind, int index) { return Choose(kind, index) == Reason::kNone; }

Reason NuvConnect::Choose(int kind, int index) {
  const Lock lock(mutex_);
  return OpenChosen(kind != 0, index);
}

Reason NuvConnect::OpenChosen(bool isNetwork, int index) {
  Link& link = LinkOf(isNetwork);
  const bool kept = isNetwork == isNetwork_ && index == index_ && link.KeepsOpen();
  const Reason reason = waiter_.GivenUp() ? Reason::kGivenUp : link.Open(index);
  if (reason != Reason::kNone) return reason;
  Opened(isNetwork, kept);
  index_ = index;
  return reason;
}

void NuvConnect::Opened(bool isNetwork, bool kept) {
  // A printer serves one client: it must not wait for one that has gone to another link. What was
  // read from it stays.
  if (isNetwork != isNetwork_) {
    leftLocal_ = isNetwork && local_.Current().IsOpen();
    Current().Close();
    isNetwork_ = isNetwork;
  }
  if (!kept) ledger_.Reset();
}

std::string NuvConnect::Identity(int kind, int index) {
  const Lock lock(mutex_);
  return LinkOf(kind != 0).Identity(index);
}

Reason NuvConnect::ChooseListed(int kind, int index, const std::string& identity) {
  const Lock lock(mutex_);
  const std::string present = LinkOf(kind != 0).Identity(index);
  if (present == identity) return OpenChosen(kind != 0, index);
  Platform::Diagnostic("device %d was listed as %s and is now %s; list again", index,
                       identity.c_str(), present.empty() ? "gone" : present.c_str());
  return Reason::kUnreachable;
}

// The links remember the printer itself: after a new search its old index may stand for another
// printer, on which a job must not go on.
Reason NuvConnect::Reopen() {
  const Lock lock(mutex_);
  Link& link = Current();
  // A USB printer stays open, but not with an answer on its way that nobody waits for. One that has
  // gone is left to the reopening, which in a job must see that.
  if (ledger_.Owes() && link.KeepsOpen()) link.Close();
  const bool kept = link.KeepsOpen();
  const Platform::Waiter::Call call(waiter_, jobInterrupt_);
  const Reason reason = waiter_.Over() ? Reason::kGivenUp : link.Reopen(job_ != JobKind::kNone);
  if (reason == Reason::kNone && !kept) ledger_.Reset();
  return reason;
}

bool NuvConnect::CloseDevice() {
  const Lock lock(mutex_);
  Current().Close();
  return true;
}

Reply NuvConnect::Transact(const Request& request) {
  if (request.line.empty()) return {};
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, request.interrupt);
  if (!request.again) DiscardStaleInput();
  const Reason written =
      Write(reinterpret_cast<const uint8_t*>(request.line.data()), request.line.size());
  if (written != Reason::kNone) return {{}, written};
  ledger_.Asked(request.line);
  return ReadReply();
}

Reply NuvConnect::ReadAgain(Platform::Interrupt* interrupt) {
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, interrupt);
  return ReadReply();
}

// A reply that came too late, or twice, would be taken for the next command's.
void NuvConnect::DiscardStaleInput() {
  if (ledger_.Owes() && ledger_.Answered()) {
    Current().Discard(kQuietMs, kLongestQuietWaitMs);
    ledger_.OweNothing();
  } else if (Current().DiscardInput()) {
    ledger_.Discarded();
  }
}

Reason NuvConnect::Send(const std::vector<uint8_t>& bytes) {
  if (bytes.empty()) return Reason::kNone;
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, jobInterrupt_);
  ledger_.Wrote(bytes.size());
  return Write(bytes.data(), bytes.size());
}

LinkLook NuvConnect::Look() {
  const Lock lock(mutex_);
  return {Current().Look() == LinkState::kAlive, ledger_.Unconfirmed()};
}

void NuvConnect::BeginJob(JobKind kind, Platform::Interrupt* interrupt) {
  job_ = kind;
  jobInterrupt_ = interrupt;
}

void NuvConnect::EndJob(bool complete) {
  Platform::Interrupt* const interrupt = jobInterrupt_.exchange(nullptr);
  // The last block of an image may still be queued for a printer that took nothing for a while.
  if (job_.exchange(JobKind::kNone) != JobKind::kImage || !complete) return;
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, interrupt);
  Current().Write(nullptr, 0, true);
}

void NuvConnect::LimitSilence(std::chrono::milliseconds limit) {
  const Lock lock(mutex_);
  network_.LimitSilence(limit);
}

void NuvConnect::SetLocalOption(int option) {
  const Lock lock(mutex_);
  local_.SetMode(option);
}

void NuvConnect::SetSearchTimeout(int timeoutMs) {
  const Lock lock(mutex_);
  SearchSettings::Instance().SetTimeoutMs(timeoutMs);
}

void NuvConnect::SetSearchPort(int port) {
  const Lock lock(mutex_);
  SearchSettings::Instance().SetPort(port);
}

void NuvConnect::SetSearchMessage(std::string message) {
  const Lock lock(mutex_);
  SearchSettings::Instance().SetMessage(message);
}

Reason NuvConnect::ConnectAddress(const std::string& address) {
  const Lock lock(mutex_);
  const Reason reason = waiter_.GivenUp() ? Reason::kGivenUp : network_.OpenAddress(address);
  if (reason == Reason::kNone) Opened(true, false);
  return reason;
}

Reason NuvConnect::Open(const Transport::NetworkDevice& device, Platform::Interrupt* interrupt) {
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, interrupt);
  const Reason reason = waiter_.Over() ? Reason::kGivenUp : network_.OpenDevice(device);
  if (reason == Reason::kNone) Opened(true, false);
  return reason;
}

Reason NuvConnect::OpenUsb(const std::string& path, Platform::Interrupt* interrupt) {
  const Lock lock(mutex_);
  const Platform::Waiter::Call call(waiter_, interrupt);
  std::vector<std::string> paths;
  local_.usb.EnumerateDevices(paths);
  const auto found = std::find(paths.begin(), paths.end(), path);
  if (found == paths.end()) return Reason::kUnreachable;
  return OpenChosen(false, static_cast<int>(found - paths.begin()));
}

std::vector<std::string> NuvConnect::CollectBroadcastReplies() {
  const Transport::SearchTurn turn = NetworkLink::WaitForTurn();
  const Lock lock(mutex_);
  return network_.CollectReplies();
}

Reason NuvConnect::Write(const uint8_t* data, size_t length) {
  if (waiter_.Over()) return Reason::kGivenUp;
  return Current().Write(data, length, job_ == JobKind::kImage);
}

Reply NuvConnect::ReadReply() {
  Reply reply = Current().ReadReply();
  ledger_.Answered(reply.text);
  // The answer is on its way: whoever asks next waits for it.
  if (reply.reason == Reason::kGivenUp) ledger_.GiveUp();
  reply.text = WithoutLineFeed(std::move(reply.text));
  return reply;
}

}  // namespace Nuv::Connect
