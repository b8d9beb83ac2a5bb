// One host of the USB/IP server: it may ask for the list, and may import one device, which is its
// own until the connection ends.
//
// Thread-safety: none; lives on the thread that runs the I/O context.
#ifndef NUVSIM_USBIP_SESSION_H_
#define NUVSIM_USBIP_SESSION_H_

#include <asio/ip/tcp.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "nuvsim/usbip_server.h"

namespace nuvsim {

class UsbipServer::Session : public UsbHost, public std::enable_shared_from_this<Session> {
 public:
  Session(asio::ip::tcp::socket socket, const UsbipServer& server);

  void Start();
  // Ends the connection at once.
  void Abort();
  // Ends it once the host has been told all that is to be told; it sees the device disconnected.
  void Ended() override;
  void Completed(std::uint32_t sequence, std::size_t length, std::string_view data) override;

 private:
  using Step = void (Session::*)();

  // Reads so many bytes into buffer_, then goes on with `next`.
  void ReadThen(std::size_t length, Step next);
  std::string_view Received() const { return {buffer_.data(), buffer_.size()}; }

  void ReadOperation();
  void OnOperation();
  void OnImport();
  void ReadTransfer();
  void OnTransfer();
  void OnSubmit();
  void OnData();
  void AnswerControl();
  void OnUnlink();

  void Write(std::string message);
  void WriteNext();
  void Detach();

  asio::ip::tcp::socket socket_;
  const UsbipServer& server_;
  UsbDevice* device_ = nullptr;  // imported
  std::vector<char> buffer_;
  TransferHeader transfer_;        // being received
  std::deque<std::string> queue_;  // the front one is being sent
  std::size_t queuedBytes_ = 0;
  Step waiting_ = nullptr;  // what goes on once the host has taken enough of the queue
  bool endsOnceWritten_ = false;
};

}  // namespace nuvsim

#endif  // NUVSIM_USBIP_SESSION_H_
