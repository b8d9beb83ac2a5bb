#include "command/reply_views.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <system_error>

namespace Nuv::Command {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool HoldsSeparator(const std::string& token) {
  return std::any_of(token.begin(), token.end(), IsSeparator);
}

// Reads values, which may go on over the tokens behind the one they begin in. Costs one pass over
// the tokens for all values together.
class ValueReader {
 public:
  // `goesOn`: tokens that hold no separator belong to the value before them.
  ValueReader(const Tokens& tokens, bool goesOn) : tokens_(tokens), goesOn_(goesOn) {}

  // The value from `offset` on in token `index`; moves `index` behind it. Angle brackets around it
  // are taken off.
  std::string Read(size_t& index, size_t offset) {
    const std::string& token = tokens_[index];
    const bool opens = offset < token.size() && token[offset] == '<';
    const size_t closing = opens ? ClosingToken(index) : kNone;
    std::string value = token.substr(offset);
    for (++index; closing != kNone ? index <= closing : goesOn_ && IsPlain(index); ++index) {
      value += ' ';
      value += tokens_[index];
    }
    if (closing != kNone) {
      value.pop_back();
      value.erase(0, 1);
    }
    return value;
  }

 private:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  bool IsPlain(size_t index) const {
    return index < tokens_.size() && !HoldsSeparator(tokens_[index]);
  }

  // The token from `index` on that closes a bracket: a name may itself hold ">" or a separator, but
  // behind its end stands a field or nothing. Where a field may lack the separator that tells it
  // from a piece of the name, the last token that can close does.
  size_t ClosingToken(size_t index) {
    if (noneCloses_) return kNone;
    size_t closing = kNone;
    for (; index < tokens_.size() && (closing == kNone || !goesOn_); ++index) {
      if (tokens_[index].back() == '>' && !(goesOn_ && IsPlain(index + 1))) closing = index;
    }
    noneCloses_ = closing == kNone;
    return closing;
  }

  const Tokens& tokens_;
  const bool goesOn_;
  bool noneCloses_ = false;  // from the last place searched on
};

// The longest key of `record` that `token` begins with, or null.
const Name* LongestKey(const std::string& token, const Record& record) {
  const Name* longest = nullptr;
  for (size_t i = 0; i < record.count; ++i) {
    const Name& key = record.keys[i];
    if (token.compare(0, key.size(), key) != 0) continue;
    if (longest == nullptr || key.size() > longest->size()) longest = &key;
  }
  return longest;
}

}  // namespace

void AppendTokens(const std::string& reply, Tokens& tokens) {
  const auto blanks = std::count_if(reply.begin(), reply.end(), IsBlank);
  tokens.reserve(tokens.size() + static_cast<size_t>(blanks) + 1);
  const auto end = reply.end();
  for (auto start = std::find_if_not(reply.begin(), end, IsBlank); start != end;) {
    const auto stop = std::find_if(start, end, IsBlank);
    tokens.emplace_back(start, stop);
    start = std::find_if_not(stop, end, IsBlank);
  }
}

Tokens ColonKeys(const Tokens& tokens) {
  Tokens keys;
  keys.reserve(tokens.size());
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
  values.reserve(tokens.size());
  ValueReader reader(tokens, true);
  for (size_t i = kFirstField; i < tokens.size();) {
    const std::string& token = tokens[i];
    const auto separator = std::find_if(token.begin(), token.end(), IsSeparator);
    if (separator == token.end()) {
      ++i;
    } else {
      values.push_back(reader.Read(i, static_cast<size_t>(separator - token.begin()) + 1));
    }
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

ResultMap ReadRecord(const Tokens& tokens, const Record& record) {
  ResultMap values;
  ValueReader reader(tokens, record.valuesGoOn);
  for (size_t i = kFirstField; i < tokens.size();) {
    const std::string& token = tokens[i];
    const Name* key = LongestKey(token, record);
    if (key == nullptr) {
      ++i;
      continue;
    }
    Name name = *key;
    size_t start = name.size();
    if (IsSeparator(name.back())) {
      name.remove_suffix(1);
    } else if (IsSeparator(token[start])) {  // or its end
      ++start;
    }
    values.emplace(name, reader.Read(i, start));
  }
  return values;
}

int ParseDecimal(const std::string& text, int code) {
  constexpr int kBase = 10;
  char* end = nullptr;
  // Beyond its own limits it stays at them.
  const long long number = std::strtoll(text.c_str(), &end, kBase);
  if (end == text.c_str()) throw MalformedNumber("invalid stoi argument", code);
  if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max()) {
    throw NumberOutOfRange("stoi argument out of range", code);
  }
  return static_cast<int>(number);
}

float ParseFraction(const std::string& text, int code) {
  float number = 0;
  const std::from_chars_result parsed =
      std::from_chars(text.data(), text.data() + text.size(), number);
  if (parsed.ec == std::errc::result_out_of_range) {
    throw NumberOutOfRange("stof argument out of range", code);
  }
  if (parsed.ec != std::errc()) throw MalformedNumber("invalid stof argument", code);
  return number;
}

std::string Fixed(double number) {
  constexpr int kPlaces = 6;
  char text[400];  // the longest double has 309 digits before the point
  const std::to_chars_result written =
      std::to_chars(text, text + sizeof text, number, std::chars_format::fixed, kPlaces);
  return {text, written.ptr};
}

}  // namespace Nuv::Command
