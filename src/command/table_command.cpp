#include "command/table_command.h"

#include <algorithm>

#include "command/reply_views.h"

namespace Nuv::Command {

std::string TableCommand::BuildRequest() const {
  if (row_.request == Request::kCommon) return CommandBase::BuildRequest();
  std::string request = RequestHead();
  const bool countFits =
      row_.exactCount == kAny || parameters_.size() == static_cast<size_t>(row_.exactCount);
  const size_t count = countFits ? std::min(parameters_.size(), row_.tags.size()) : 0;
  for (size_t i = 0; i < count; ++i) {
    const bool bracketed = row_.request == Request::kNamed && i + 1 == row_.tags.size();
    request += ' ';
    request += row_.tags[i];
    request += bracketed ? "<" + parameters_[i] + ">" : parameters_[i];
  }
  return request + "\r\n";
}

std::vector<std::string> TableCommand::GetReplyValues() const {
  switch (row_.values) {
    case Values::kNone:
      break;
    case Values::kLetter:
      return LetterValues(replyTokens_);
    case Values::kField:
      return FieldValues(replyTokens_);
    case Values::kRestOfLine:
      return RestOfLineValues(replyTokens_);
  }
  return {};
}

bool TableCommand::IsReplyOk(const std::vector<std::string>& tokens) const {
  if (row_.ok == Ok::kSecond) return CommandBase::IsReplyOk(tokens);
  return std::find(tokens.begin(), tokens.end(), "OK") != tokens.end();
}

std::vector<std::string> TableCommand::GetReplyKeys() const {
  return row_.keys == Keys::kLetter ? LetterKeys(replyTokens_) : ColonKeys(replyTokens_);
}

ResultMap TableCommand::GetResultMap() const { return ReadRecord(replyTokens_, row_.record); }

}  // namespace Nuv::Command
