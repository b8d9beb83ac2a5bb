#include "command/command_base.h"

#include <algorithm>
#include <chrono>

#include "command/reply_views.h"
#include "platform/diagnostics.h"

namespace Nuv::Command {

using Connect::Reason;

namespace {

constexpr std::chrono::milliseconds kRecoveryPause(1000);
constexpr int kMaxResends = 2;
constexpr int kMaxRereads = 2;

bool BreaksTheLine(const std::vector<std::string>& parameters) {
  for (const std::string& parameter : parameters) {
    if (parameter.find_first_of(std::string("\r\n\0", 3)) != std::string::npos) return true;
  }
  return false;
}

}  // namespace

TransactionStatus CommandBase::Execute() {
  // The rest of such a parameter would reach the printer as a command of its own.
  if (BreaksTheLine(parameters_)) {
    Platform::Diagnostic("F%d not sent: a parameter holds a line end", code_);
    reason_ = Reason::kMalformed;
    return kNoReply;
  }
  const TransactionStatus status = AbstractCommand::Execute();
  if (status != kReplied) {
    if (status == kOtherReply) {
      reason_ = Reason::kOtherReply;
    } else if (reason_ == Reason::kNone) {
      reason_ = Reason::kMalformed;
    }
    Platform::Diagnostic("F%d failed: %s", code_, WordsFor(reason_));
  }
  return status;
}

void CommandBase::Recover(TransactionStatus& status, const std::string& request) {
  if (status == kReplied) return;
  int rereads = 0;
  do {
    // Over a link that has ended no answer comes. Whoever can end this call makes it anew.
    const bool ended = reason_ == Reason::kEnded || reason_ == Reason::kNotOpen;
    if (reason_ == Reason::kGivenUp || (ended && interrupt_ != nullptr) || !Pause()) return;
    if (status == kNoReply) {
      const Reason before = reason_;
      status = ParseReply(Ask(request, true));
      // Nothing is open any more, for the reason that the request had before.
      if (reason_ == Reason::kNotOpen) reason_ = before;
      ++resends_;
    } else {
      // It is of no use: the head of the first reply decides.
      reason_ = channel_->ReadAgain(interrupt_).reason;
      ++rereads;
    }
  } while (status != kReplied && resends_ < kMaxResends && rereads < kMaxRereads);
}

bool CommandBase::Pause() {
  if (interrupt_ != nullptr) return !clock_->WaitFor(kRecoveryPause, *interrupt_);
  clock_->SleepFor(kRecoveryPause);
  return true;
}

std::string CommandBase::BuildRequest() const {
  std::string request = "F" + std::to_string(code_);
  if (parameters_.size() == 1) request += " S" + parameters_.front();
  return request + "\r\n";
}

TransactionStatus CommandBase::ParseReply(const std::string& reply) {
  // Not cleared first: the head of the first reply decides for the whole transaction.
  AppendTokens(reply, replyTokens_);
  if (replyTokens_.size() < 2) return kNoReply;
  // The first character echoes the request's "F" and is not checked.
  replyCode_ = ParseDecimal(replyTokens_[0].substr(1), code_);
  if (replyCode_ != code_) return kOtherReply;
  replyOk_ = IsReplyOk(replyTokens_);
  return kReplied;
}

std::vector<std::string> CommandBase::GetReplyValues() const { return {}; }

void CommandBase::DeliverResult() {
  if (!resultCallback_) return;
  std::vector<std::string> values = GetReplyValues();
  result_ = GetResultMap();
  if (result_.empty()) {
    const std::vector<std::string> keys = GetReplyKeys();
    if (keys.size() != values.size()) {
      Platform::Diagnostic("Failed to get command: F%d", code_);
    } else {
      for (size_t i = 0; i < keys.size(); ++i) result_[keys[i]] = values[i];
    }
  }
  resultCallback_(code_, replyCode_, replyOk_, std::move(values));
}

bool CommandBase::IsReplyOk(const std::vector<std::string>& tokens) const {
  return tokens.size() > 1 && tokens[1] == "OK";
}

std::vector<std::string> CommandBase::GetReplyKeys() const { return ColonKeys(replyTokens_); }

ResultMap CommandBase::GetResultMap() const { return {}; }

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
