#include "command/reply_views.h"

#include <algorithm>

namespace Nuv::Command {
namespace {

constexpr char kSeparators[] = ":=";
constexpr size_t kUsualTokens = 16;

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool HoldsSeparator(const std::string& token) {
  return token.find_first_of(kSeparators) != std::string::npos;
}

bool IsSeparator(char c) { return c == ':' || c == '='; }

// Appends to `value` the tokens from `index` on that hold no separator; moves `index` behind them.
void JoinFollowing(const Tokens& tokens, size_t& index, std::string& value) {
  for (; index < tokens.size() && !HoldsSeparator(tokens[index]); ++index) {
    value += ' ';
    value += tokens[index];
  }
}

std::string WithoutBrackets(std::string value) {
  if (value.size() >= 2 && value.front() == '<' && value.back() == '>') {
    value.pop_back();
    value.erase(0, 1);
  }
  return value;
}

// The longest key that `token` begins with, or null.
const std::string_view* LongestKey(const std::string& token, const std::string_view* keys,
                                   size_t keyCount) {
  const std::string_view* longest = nullptr;
  for (const std::string_view* key = keys; key != keys + keyCount; ++key) {
    if (token.compare(0, key->size(), *key) != 0) continue;
    if (longest == nullptr || key->size() > longest->size()) longest = key;
  }
  return longest;
}

}  // namespace

void AppendTokens(const std::string& reply, Tokens& tokens) {
  if (tokens.capacity() < kUsualTokens) tokens.reserve(kUsualTokens);
  const auto end = reply.end();
  for (auto start = std::find_if_not(reply.begin(), end, IsBlank); start != end;) {
    const auto stop = std::find_if(start, end, IsBlank);
    tokens.emplace_back(start, stop);
    start = std::find_if_not(stop, end, IsBlank);
  }
}

Tokens ColonKeys(const Tokens& tokens) {
  Tokens keys;
  for (const std::string& token : tokens) {
    const size_t colon = token.find(':');
    if (colon != std::string::npos) keys.push_back(token.substr(0, colon));
  }
  return keys;
}

Tokens LetterKeys(const Tokens& tokens) {
  Tokens keys;
  for (size_t i = kFirstField; i < tokens.size(); ++i) keys.push_back(tokens[i].substr(0, 1));
  return keys;
}

Tokens LetterValues(const Tokens& tokens) {
  Tokens values;
  for (size_t i = kFirstField; i < tokens.size(); ++i) values.push_back(tokens[i].substr(1));
  return values;
}

Tokens FieldValues(const Tokens& tokens) {
  Tokens values;
  for (size_t i = kFirstField; i < tokens.size();) {
    const size_t separator = tokens[i].find_first_of(kSeparators);
    if (separator == std::string::npos) {
      ++i;
      continue;
    }
    std::string value = tokens[i].substr(separator + 1);
    JoinFollowing(tokens, ++i, value);
    values.push_back(WithoutBrackets(std::move(value)));
  }
  return values;
}

Tokens RestOfLineValues(const Tokens& tokens) {
  Tokens values;
  for (size_t i = kFirstField; i < tokens.size(); ++i) {
    const size_t colon = tokens[i].find(':');
    if (colon == std::string::npos) continue;
    values.push_back(tokens[i].substr(colon + 1));
    if (values.size() > 1) continue;
    for (size_t j = i + 1; j < tokens.size(); ++j) values.front() += ' ' + tokens[j];
  }
  return values;
}

ResultMap ReadRecord(const Tokens& tokens, const std::string_view* keys, size_t keyCount) {
  ResultMap record;
  for (size_t i = kFirstField; i < tokens.size();) {
    const std::string& token = tokens[i++];
    const std::string_view* key = LongestKey(token, keys, keyCount);
    if (key == nullptr) continue;
    std::string_view name = *key;
    size_t valueStart = name.size();
    std::string joined;
    if (IsSeparator(name.back())) {
      name.remove_suffix(1);
      joined = token.substr(valueStart);
      JoinFollowing(tokens, i, joined);
    } else {
      if (valueStart < token.size() && IsSeparator(token[valueStart])) ++valueStart;
      joined = token.substr(valueStart);
    }
    record.emplace(name, std::move(joined));
  }
  return record;
}

}  // namespace Nuv::Command
