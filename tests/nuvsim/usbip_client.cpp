#include "usbip_client.h"

#include <asio/buffer.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>

#include "fixture.h"

namespace NuvSim {

using asio::ip::tcp;

std::string Big16(uint32_t number) {
  return {static_cast<char>(number >> 8 & 0xff), static_cast<char>(number & 0xff)};
}

std::string Big32(uint32_t number) { return Big16(number >> 16) + Big16(number); }

uint32_t FromBig(const std::string& bytes) {
  uint32_t number = 0;
  for (const char each : bytes) number = number << 8 | static_cast<unsigned char>(each);
  return number;
}

std::string FromHex(const std::string& digits) {
  std::string bytes;
  std::string pair;
  for (const char each : digits) {
    if (each != ' ') pair += each;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

std::string ToHex(const std::string& bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string digits;
  for (const char each : bytes) {
    digits += kDigits[static_cast<unsigned char>(each) >> 4];
    digits += kDigits[each & 0xf];
  }
  return digits;
}

std::string Submit(uint32_t sequence, uint32_t isIn, uint32_t endpoint, uint32_t length,
                   const std::string& setup, uint32_t packets) {
  return Big32(1) + Big32(sequence) + Big32(0x10002) + Big32(isIn) + Big32(endpoint) + Big32(0) +
         Big32(length) + Big32(0) + Big32(packets) + Big32(0) + setup;
}

UsbipClient::UsbipClient(uint16_t port) : socket_(io_) {
  socket_.connect(tcp::endpoint(asio::ip::address_v4::loopback(), port));
}

void UsbipClient::SendBytes(const std::string& bytes) {
  asio::error_code ignored;  // the simulator may have ended the connection already
  asio::write(socket_, asio::buffer(bytes), ignored);
}

std::string UsbipClient::ReadBytes(size_t length) {
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

uint32_t UsbipClient::Import(const std::string& busId) {
  std::string padded = busId;
  padded.resize(32, '\0');
  SendBytes(Big16(0x0111) + Big16(0x8003) + Big32(0) + padded);
  const std::string header = ReadBytes(8);
  EXPECT_EQ(ToHex(header.substr(0, 4)), "01110003");
  const uint32_t status = FromBig(header.substr(4));
  if (status == 0) {
    EXPECT_EQ(ReadBytes(312).substr(256, 4), busId + '\0');
  }
  return status;
}

uint32_t UsbipClient::Start(uint32_t isIn, uint32_t endpoint, uint32_t length,
                            const std::string& setup, const std::string& data) {
  ++sequence_;
  if (isIn != 0) reads_.insert(sequence_);
  SendBytes(Submit(sequence_, isIn, endpoint, length, setup) + data);
  return sequence_;
}

uint32_t UsbipClient::Control(const std::string& setupHex, uint32_t length) {
  const std::string setup = FromHex(setupHex);
  const bool isIn = (setup[0] & 0x80) != 0;
  return Start(isIn ? 1 : 0, 0, isIn ? length : 0, setup, "");
}

uint32_t UsbipClient::Write(const std::string& bytes) {
  return Start(0, 1, static_cast<uint32_t>(bytes.size()), std::string(8, '\0'), bytes);
}

uint32_t UsbipClient::Read(uint32_t length) {
  return Start(1, 2, length, std::string(8, '\0'), "");
}

uint32_t UsbipClient::Unlink(uint32_t sequence) {
  SendBytes(Big32(2) + Big32(++sequence_) + Big32(0x10002) + Big32(0) + Big32(0) + Big32(sequence) +
            std::string(24, '\0'));
  return sequence_;
}

UsbipReply UsbipClient::Next() {
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

std::string UsbipClient::Ask(const std::string& command) {
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

}  // namespace NuvSim
