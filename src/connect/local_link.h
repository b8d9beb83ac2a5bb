#ifndef NUV_CONNECT_LOCAL_LINK_H_
#define NUV_CONNECT_LOCAL_LINK_H_

#include <memory>
#include <string>
#include <vector>

#include "connect/link.h"
#include "transport/connector_base.h"
#include "transport/discovery_reply.h"
#include "transport/tcp_client_socket.h"

namespace Nuv::Connect {

// A link whose replies come in blocks. Each write first throws away replies that nobody has read.
class LocalLink : public Link {
 public:
  virtual bool IsOpen() const = 0;

  // The next reply line, however many blocks it comes in; what came when no more does within the
  // time limit, which holds for each block, or within 30 s in all.
  Reply ReadReply() override;

  // The bytes of the last reply, also after closing; false when there are none.
  bool LastRead(std::vector<uint8_t>& data) const;

 protected:
  using Link::Link;

  // How long a transfer may take.
  static constexpr int kTransferTimeoutMs = 3000;

  // One block of a reply; empty when none came in time.
  virtual std::string ReadBlock(int timeoutMs) = 0;

 private:
  std::string lastRead_;
};

// Printers on USB.
class UsbLink final : public LocalLink {
 public:
  UsbLink(std::unique_ptr<ConnectorBase> connector, const Platform::Waiter& waiter)
      : LocalLink(waiter), connector_(std::move(connector)) {
    connector_->SetWaiter(waiter);
  }

  // Replaces `found` by the stored names of the attached printers. False: they could not all be
  // listed.
  bool EnumerateDevices(std::vector<std::string>& found);

  // A negative index is refused. See ConnectorBase for what becomes of an open printer.
  Reason Open(int index) override;
  // In a job only the very connection, or one that this side has closed.
  Reason Reopen(bool job) override;
  void Close() override { connector_->Close(); }
  bool IsOpen() const override { return connector_->Look() != LinkState::kClosed; }
  LinkState Look() override { return connector_->Look(); }
  bool KeepsOpen() override { return Look() == LinkState::kAlive; }
  bool Discard(int quietMs, int limitMs) override;
  Reason Write(const uint8_t* data, size_t length, bool patient) override;
  std::string Identity(int index) const override;

 private:
  std::string ReadBlock(int timeoutMs) override;

  std::unique_ptr<ConnectorBase> connector_;
};

// The local link's own UDP search, and a plain TCP connection to one of the printers that the last
// search found.
class SocketLink final : public LocalLink {
 public:
  explicit SocketLink(const Platform::Waiter& waiter, const Transport::TcpLimits& limits = {})
      : LocalLink(waiter), limits_(limits), socket_(limits, waiter) {}

  // Searches with the process-wide message and port: the network of `address` with `netmask`, or
  // every network of the host when both are empty. `found`: the answers. 0 or below as `timeoutMs`
  // stands for the default. False: the search could not be made.
  bool SearchDevices(std::vector<std::string>& found, const std::string& address,
                     const std::string& netmask, int timeoutMs);

  // Counts the answers that named a printer.
  Reason Open(int index) override;
  // The address, since the printers of a later search may come in another order.
  Reason Reopen(bool job) override;
  void Close() override;
  bool IsOpen() const override { return socket_.IsOpen(); }
  LinkState Look() override;
  bool Discard(int quietMs, int limitMs) override;
  // What is not written in time leaves a part of a command on the wire: the connection is closed.
  Reason Write(const uint8_t* data, size_t length, bool patient) override;
  // "address:port".
  std::string Identity(int index) const override;

 private:
  std::string ReadBlock(int timeoutMs) override;
  Reason Connect(const Transport::NetworkDevice& device);

  const Transport::TcpLimits limits_;
  TcpClientSocket socket_;
  std::vector<Transport::NetworkDevice> devices_;
  Transport::NetworkDevice current_;  // the last that was opened
  bool opened_ = false;               // since the last Close
};

// The two links that share the kind 0 of devices. Which of them opens, writes and reads is decided
// by the mode; USB printers are listed, and the network searched, in either.
struct LocalLinks {
  LocalLinks(std::unique_ptr<ConnectorBase> connector, const Platform::Waiter& waiter)
      : usb(std::move(connector), waiter), sockets(waiter) {}

  LocalLink& Current() { return usesSockets ? static_cast<LocalLink&>(sockets) : usb; }

  // 0 USB, 1 sockets; others change nothing. What the other link has open is closed.
  void SetMode(int mode);

  UsbLink usb;
  SocketLink sockets;
  bool usesSockets = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_CONNECT_LOCAL_LINK_H_
