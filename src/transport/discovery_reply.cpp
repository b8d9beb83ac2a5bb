#include "transport/discovery_reply.h"

#include <vector>

#include "platform/diagnostics.h"

namespace Nuv::Transport {

namespace {

using Words = std::vector<std::string>;

std::string Trimmed(const std::string& text) {
  constexpr char kWhite[] = " \t\r\n\v\f";
  const size_t first = text.find_first_not_of(kWhite);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kWhite) - first + 1);
}

// Empty words are kept: two blanks in a name are two blanks in the printer's name.
Words SplitAtBlanks(const std::string& text) {
  Words words;
  size_t start = 0;
  while (true) {
    const size_t blank = text.find(' ', start);
    words.push_back(text.substr(start, blank - start));
    if (blank == std::string::npos) return words;
    start = blank + 1;
  }
}

bool BeginsWith(const std::string& word, const std::string& key) {
  return word.compare(0, key.size(), key) == 0;
}

// The text behind `startKey`, over as many words as it takes until a word that begins with `endKey`
// (empty: only the rest of the start word). The printer writes values with blanks unquoted.
std::string ExtractValue(const Words& words, const std::string& startKey,
                         const std::string& endKey) {
  std::string value;
  for (std::string word : words) {
    if (word.find('\n') != std::string::npos) word.pop_back();
    if (!value.empty()) {
      if (BeginsWith(word, endKey)) break;
      value += ' ';
      value += word;
    } else if (BeginsWith(word, startKey)) {
      value = word.substr(startKey.size());
    }
  }
  return value;
}

// Names and addresses stand in angle brackets; the opening one is part of the start key.
std::string WithoutClosingBracket(std::string value) {
  if (!value.empty()) value.pop_back();
  return value;
}

bool ParsePort(const std::string& text, uint16_t& port) {
  constexpr uint32_t kMaxPort = 65535;
  uint32_t number = 0;
  for (const char digit : text) {
    if (digit < '0' || digit > '9') return false;
    number = number * 10 + static_cast<uint32_t>(digit - '0');
    if (number > kMaxPort) return false;
  }
  port = static_cast<uint16_t>(number);
  return true;
}

}  // namespace

NetworkDevice ParseDiscoveryReply(const std::string& reply) {
  NetworkDevice device;
  const Words words = SplitAtBlanks(Trimmed(reply));
  if (words.size() < 2 || words[1] != "OK") return device;
  if (!ParsePort(ExtractValue(words, "PORT=", ""), device.port)) {
    Platform::Diagnostic("search reply dropped, PORT= is no port number: %s", reply.c_str());
    return device;
  }
  device.address = WithoutClosingBracket(ExtractValue(words, "IP=<", "PORT"));
  device.name = WithoutClosingBracket(ExtractValue(words, "N=<", "M"));
  device.mac = ExtractValue(words, "M:", "CN");
  device.valid = true;
  return device;
}

}  // namespace Nuv::Transport
