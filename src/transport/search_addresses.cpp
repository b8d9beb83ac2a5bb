#include "transport/search_addresses.h"

#include <algorithm>
#include <optional>
#include <sstream>

#include "transport/addresses.h"

namespace Nuv::Transport {
namespace {

bool IsOfOneDevice(uint32_t address) {
  const uint32_t first = address >> 24;
  return first > 0 && first < 224;
}

std::optional<SearchAddress> ParseAddress(const std::string& item, uint16_t port) {
  const size_t colon = item.find(':');
  const std::string host = item.substr(0, colon);
  const uint32_t address = DottedToNumber(host);
  if (NumberToDotted(address) != host || !IsOfOneDevice(address)) return std::nullopt;
  if (colon != std::string::npos) {
    const std::string digits = item.substr(colon + 1);
    // As the one number of a dotted text, which knows digits only.
    const uint32_t number = digits.size() > 5 ? 0 : DottedToNumber(digits);
    if (std::to_string(number) != digits || number == 0 || number > 65535) return std::nullopt;
    port = static_cast<uint16_t>(number);
  }
  return SearchAddress(address, port);
}

}  // namespace

SearchAddresses ParseSearchAddresses(const std::string& text, uint16_t port,
                                     const ListBroadcasts& broadcasts) {
  SearchAddresses addresses;
  std::optional<std::vector<std::string>> listed;
  const auto isBroadcast = [&](const SearchAddress& each) {
    // Of no network that has broadcasts: the last bits of those are set.
    constexpr uint32_t kLastBits = 3;
    if ((each.first & kLastBits) != kLastBits) return false;
    if (!listed) listed = broadcasts();
    return std::find(listed->begin(), listed->end(), NumberToDotted(each.first)) != listed->end();
  };
  std::istringstream items(text);
  for (std::string item; items >> item;) {
    if (item == "broadcast") {
      addresses.broadcast = true;
      continue;
    }
    const std::optional<SearchAddress> address = ParseAddress(item, port);
    auto& asked = addresses.asked;
    if (address && std::find(asked.begin(), asked.end(), *address) != asked.end()) continue;
    if (address && !isBroadcast(*address) && asked.size() < SearchAddresses::kMost) {
      asked.push_back(*address);
    } else {
      addresses.notUnderstood.push_back(item);
    }
  }
  return addresses;
}

}  // namespace Nuv::Transport
