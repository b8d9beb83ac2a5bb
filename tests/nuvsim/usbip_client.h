// A USB/IP host that sends and reads the protocol's bytes itself.
#ifndef NUVSIM_TEST_USBIP_CLIENT_H_
#define NUVSIM_TEST_USBIP_CLIENT_H_

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <set>
#include <sstream>
#include <string>

#include "fixture.h"

namespace NuvSim {

// Numbers as they go over: big-endian.
inline std::string Big32(uint32_t number) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(number >> shift & 0xff);
  return bytes;
}
inline uint32_t FromBig(const std::string& bytes) {
  uint32_t number = 0;
  for (const char each : bytes) number = number << 8 | static_cast<unsigned char>(each);
  return number;
}

// Hexadecimal digits to bytes and back; blanks are passed over.
inline std::string FromHex(const std::string& digits) {
  std::istringstream pairs(digits);
  std::string bytes;
  for (char pair[3] = {}; pairs >> pair[0] >> pair[1];) {
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
  }
  return bytes;
}
inline std::string ToHex(const std::string& bytes) {
  std::string digits;
  for (const char each : bytes) {
    for (const int half : {each >> 4 & 0xf, each & 0xf}) digits += "0123456789abcdef"[half];
  }
  return digits;
}

// The header of a transfer as it goes over.
inline std::string Submit(uint32_t sequence, uint32_t isIn, uint32_t endpoint, uint32_t length,
                          const std::string& setup = std::string(8, '\0'),
                          uint32_t packets = 0xffffffff) {
  return Big32(1) + Big32(sequence) + Big32(0x10002) + Big32(isIn) + Big32(endpoint) + Big32(0) +
         Big32(length) + Big32(0) + Big32(packets) + Big32(0) + setup;
}

struct UsbipReply {
  uint32_t command = 0;  // 3: of a transfer, 4: of an unlink, 0: the connection has ended
  uint32_t sequence = 0;
  int status = 0;
  uint32_t length = 0;
  std::string data;
};

class UsbipClient {
 public:
  explicit UsbipClient(uint16_t port) : socket_(io_) {
    socket_.connect({asio::ip::address_v4::loopback(), port});
  }

  void SendBytes(const std::string& bytes) {
    asio::error_code ignored;  // the simulator may have ended the connection already
    asio::write(socket_, asio::buffer(bytes), ignored);
  }
  // So many bytes; fewer when the connection ends or patience does.
  std::string ReadBytes(size_t length) {
    std::string bytes(length, '\0');
    size_t got = 0;
    asio::async_read(socket_, asio::buffer(bytes), [&](const asio::error_code& error, size_t n) {
      got = n;
      ended_ = error == asio::error::eof || error == asio::error::connection_reset;
    });
    RunPatiently(io_, socket_);
    bytes.resize(got);
    return bytes;
  }
  bool HasEnded() { return ReadBytes(1).empty() && ended_; }

  // Imports a device; the status of the reply, 0 when it is imported.
  uint32_t Import(const std::string& busId) {
    std::string padded = busId;
    padded.resize(32, '\0');
    SendBytes(FromHex("0111 8003 00000000") + padded);
    const std::string header = ReadBytes(8);
    EXPECT_EQ(ToHex(header.substr(0, 4)), "01110003");
    const uint32_t status = FromBig(header.substr(4));
    EXPECT_TRUE(status != 0 || ReadBytes(312).substr(256, 4) == busId + '\0');
    return status;
  }

  // Each returns the number of its transfer.
  uint32_t Control(const std::string& setupHex, uint32_t length = 255) {
    const std::string setup = FromHex(setupHex);
    const bool isIn = (setup[0] & 0x80) != 0;
    return Start(isIn ? 1 : 0, 0, isIn ? length : 0, setup, "");
  }
  uint32_t Write(const std::string& bytes) {
    return Start(0, 1, static_cast<uint32_t>(bytes.size()), std::string(8, '\0'), bytes);
  }
  uint32_t Read(uint32_t length = 1024) { return Start(1, 2, length, std::string(8, '\0'), ""); }
  uint32_t Unlink(uint32_t sequence) {
    SendBytes(Big32(2) + Big32(++sequence_) + Big32(0x10002) + Big32(0) + Big32(0) +
              Big32(sequence) + std::string(24, '\0'));
    return sequence_;
  }

  UsbipReply Next() {
    const std::string header = ReadBytes(48);
    UsbipReply reply;
    if (header.size() < 48) return reply;
    reply.command = FromBig(header.substr(0, 4));
    reply.sequence = FromBig(header.substr(4, 4));
    reply.status = static_cast<int>(FromBig(header.substr(20, 4)));
    if (reply.command == 3) {
      reply.length = FromBig(header.substr(24, 4));
      if (reads_.count(reply.sequence) > 0) reply.data = ReadBytes(reply.length);
    }
    return reply;
  }
  // Writes a line and reads until a whole line is there.
  std::string Ask(const std::string& command) {
    Write(command + "\r\n");
    EXPECT_EQ(Next().length, command.size() + 2);
    std::string line;
    while (line.find("\r\n") == std::string::npos) {
      Read();
      const UsbipReply reply = Next();
      if (reply.command != 3) break;
      line += reply.data;
    }
    return line.substr(0, line.find("\r\n"));
  }

 private:
  uint32_t Start(uint32_t isIn, uint32_t endpoint, uint32_t length, const std::string& setup,
                 const std::string& data) {
    ++sequence_;
    if (isIn != 0) reads_.insert(sequence_);
    SendBytes(Submit(sequence_, isIn, endpoint, length, setup) + data);
    return sequence_;
  }

  asio::io_context io_;
  asio::ip::tcp::socket socket_;
  uint32_t sequence_ = 0;
  std::set<uint32_t> reads_;  // transfers whose replies bring data
  bool ended_ = false;
};

}  // namespace NuvSim

#endif  // NUVSIM_TEST_USBIP_CLIENT_H_
