#ifndef NUV_CONNECT_NUV_CONNECT_H_
#define NUV_CONNECT_NUV_CONNECT_H_

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

#include "command/i_channel.h"
#include "connect/local_link.h"
#include "connect/network_link.h"
#include "connect/reply_ledger.h"

namespace Nuv::Connect {

// The raw command channel: the local link and the network link under one lock.
//
// Thread-safety: safe; each operation holds the lock for its duration.
class NuvConnect final : public IChannel {
 public:
  // How long a network printer may take to answer. A printer that heats or homes answers late.
  static constexpr int kReplyTimeoutMs = 36000;

  // `usb`: the connector of the local link.
  // `clock` outlives the channel.
  explicit NuvConnect(int replyTimeoutMs = kReplyTimeoutMs,
                      std::unique_ptr<ConnectorBase> usb = MakeUsbConnector(),
                      Platform::Clock& clock = Platform::SystemClock());

  bool SearchDevices(std::vector<std::string>& found, std::string address, std::string netmask,
                     int timeoutMs) override;
  bool EnumerateDevices(int kind, std::vector<std::string>& found) override;
  bool ReadLocalData(std::vector<uint8_t>& data) override;
  bool ChooseDevice(int kind, int index) override;
  bool CloseDevice() override;
  void SetLocalOption(int option) override;
  void SetSearchTimeout(int timeoutMs) override;
  void SetSearchPort(int port) override;
  void SetSearchMessage(std::string message) override;

  Reason Reopen() override;
  Reason Send(const std::vector<uint8_t>& bytes) override;
  Reply Transact(const Request& request) override;
  Reply ReadAgain(Platform::Interrupt* interrupt) override;
  LinkLook Look() override;
  void BeginJob(JobKind kind, Platform::Interrupt* interrupt) override;
  void EndJob(bool complete) override;

  // From now on opening, writing and reading fail at once, and what is under way within 600 ms.
  // Takes no lock, so that it reaches the operation under way.
  void GiveUp() { waiter_.GiveUp(); }

  // Names the device at `index` of the last enumeration of `kind`, and that enumeration: whatever
  // has come into its place since has another name. Empty when there is none.
  std::string Identity(int kind, int index);

  // As ChooseDevice.
  Reason Choose(int kind, int index);

  // As ChooseDevice, if `index` still stands for the device of this identity.
  Reason ChooseListed(int kind, int index, const std::string& identity);

  // Connects to the network printer of the last enumeration with this address and makes it current.
  // The index of the choice stays; OpenDevice reopens this address all the same.
  Reason ConnectAddress(const std::string& address);

  // Connects to this printer, within the wait of a call whose interrupt may be null.
  Reason Open(const Transport::NetworkDevice& device, Platform::Interrupt* interrupt);

  // As Open, to the printer on USB whose stored name this is.
  Reason OpenUsb(const std::string& path, Platform::Interrupt* interrupt);

  // See NetworkLink.
  void ReadWholeLines() { network_.ReadWholeLines(); }
  void LimitSilence(std::chrono::milliseconds limit);

  // One network search with the stored settings: the distinct reply texts. Changes neither the list
  // of the last enumeration nor the connection.
  std::vector<std::string> CollectBroadcastReplies();

 private:
  Reason OpenChosen(bool isNetwork, int index);
  Link& LinkOf(bool isNetwork) {
    return isNetwork ? static_cast<Link&>(network_) : local_.Current();
  }
  Link& Current() { return LinkOf(isNetwork_); }
  // Makes the link that was opened current. `kept`: it was open all along.
  void Opened(bool isNetwork, bool kept);
  void DiscardStaleInput();
  Reason Write(const uint8_t* data, size_t length);
  Reply ReadReply();

  std::mutex mutex_;
  Platform::Waiter waiter_;
  LocalLinks local_;
  NetworkLink network_;
  int index_ = -1;  // of the last choice
  bool isNetwork_ = false;
  ReplyLedger ledger_;      // of the current connection
  bool leftLocal_ = false;  // the local link was open when the network was chosen
  std::atomic<JobKind> job_{JobKind::kNone};
  std::atomic<Platform::Interrupt*> jobInterrupt_{nullptr};
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_NUV_CONNECT_H_
