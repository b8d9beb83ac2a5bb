#ifndef NUV_CONNECT_NUV_CONNECT_H_
#define NUV_CONNECT_NUV_CONNECT_H_

#include <mutex>
#include <string>
#include <vector>

#include "connect/local_link.h"
#include "connect/network_link.h"
#include "nuvconnect/IConnect.h"

namespace Nuv::Connect {

// The raw command channel: the local link and the network link under one lock.
//
// Thread-safety: safe; each operation holds the lock for its duration.
class NuvConnect final : public IConnect {
 public:
  // How long a network printer may take to answer. A printer that heats or homes answers late.
  static constexpr int kReplyTimeoutMs = 36000;

  // `usb`: the connector of the local link.
  explicit NuvConnect(int replyTimeoutMs = kReplyTimeoutMs,
                      std::unique_ptr<ConnectorBase> usb = MakeUsbConnector());
  ~NuvConnect() override;

  bool SearchDevices(std::vector<std::string>& found, std::string a, std::string b, int c) override;
  bool EnumerateDevices(int kind, std::vector<std::string>& found) override;
  bool ReadLocalData(std::vector<uint8_t>& data) override;
  bool ChooseDevice(int kind, int index) override;
  bool OpenDevice() override;
  bool CloseDevice() override;
  std::string ReceiveReply() override;
  std::string ExecuteCommand(std::string command) override;
  bool SendBytes(std::vector<uint8_t> bytes) override;
  void SetLocalOption(int option) override;
  void SetSearchTimeout(int timeoutMs) override;
  void SetSearchPort(int port) override;
  void SetSearchMessage(std::string message) override;

  // From now on no reply of a network printer is waited for: whoever waits has none within 600 ms.
  // Takes no lock, so that it reaches the operation under way.
  void GiveUpReplies() {
    network_.GiveUp();
    local_.GiveUp();
  }

  // Connects to the network printer of the last enumeration with this address and makes it current.
  // The index of the choice stays; OpenDevice reopens this address all the same.
  bool ConnectAddress(const std::string& address);

  // One network search with the stored settings: the distinct reply texts. Changes neither the list
  // of the last enumeration nor the connection.
  std::vector<std::string> CollectBroadcastReplies();

 private:
  bool Choose(int kind, int index);
  bool Write(const uint8_t* data, size_t length);
  std::string ReadReply();

  std::mutex mutex_;
  LocalLink local_;
  NetworkLink network_;
  int index_ = -1;  // of the last choice
  bool isNetwork_ = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_NUV_CONNECT_H_
