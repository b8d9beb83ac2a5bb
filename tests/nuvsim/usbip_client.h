// A USB/IP host that sends and reads the protocol's bytes itself.
#ifndef NUVSIM_TEST_USBIP_CLIENT_H_
#define NUVSIM_TEST_USBIP_CLIENT_H_

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace NuvSim {

// Numbers as they go over: big-endian.
std::string Big16(uint32_t number);
std::string Big32(uint32_t number);
uint32_t FromBig(const std::string& bytes);
// Hexadecimal digits to bytes and back; blanks are passed over.
std::string FromHex(const std::string& digits);
std::string ToHex(const std::string& bytes);

// The header of a transfer as it goes over.
std::string Submit(uint32_t sequence, uint32_t isIn, uint32_t endpoint, uint32_t length,
                   const std::string& setup = std::string(8, '\0'), uint32_t packets = 0xffffffff);

struct UsbipReply {
  uint32_t command = 0;  // 3: of a transfer, 4: of an unlink, 0: the connection has ended
  uint32_t sequence = 0;
  int status = 0;
  uint32_t length = 0;
  std::string data;
};

class UsbipClient {
 public:
  explicit UsbipClient(uint16_t port);

  void SendBytes(const std::string& bytes);
  // So many bytes; fewer when the connection ends or patience does.
  std::string ReadBytes(size_t length);
  bool HasEnded() { return ReadBytes(1).empty() && ended_; }

  // Imports a device; the status of the reply, 0 when it is imported.
  uint32_t Import(const std::string& busId);

  // Each returns the number of its transfer.
  uint32_t Control(const std::string& setupHex, uint32_t length = 255);
  uint32_t Write(const std::string& bytes);
  uint32_t Read(uint32_t length = 1024);
  uint32_t Unlink(uint32_t sequence);

  UsbipReply Next();
  // Writes a line and reads until a whole line is there.
  std::string Ask(const std::string& command);

 private:
  uint32_t Start(uint32_t isIn, uint32_t endpoint, uint32_t length, const std::string& setup,
                 const std::string& data);

  asio::io_context io_;
  asio::ip::tcp::socket socket_;
  uint32_t sequence_ = 0;
  std::set<uint32_t> reads_;  // transfers whose replies bring data
  bool ended_ = false;
};

}  // namespace NuvSim

#endif  // NUVSIM_TEST_USBIP_CLIENT_H_
