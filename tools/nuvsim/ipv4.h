// IPv4 addresses as numbers in host byte order.
#ifndef NUVSIM_IPV4_H_
#define NUVSIM_IPV4_H_

#include <cstdint>
#include <optional>
#include <string>

namespace nuvsim {

// Four decimal octets joined by "."; empty for anything else.
std::optional<std::uint32_t> ParseIpv4(const std::string& text);
std::string FormatIpv4(std::uint32_t address);

inline bool IsLoopback(std::uint32_t address) { return address >> 24 == 127; }

}  // namespace nuvsim

#endif  // NUVSIM_IPV4_H_
