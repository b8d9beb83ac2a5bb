#include "command/commands.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace Nuv::Command {

namespace {

constexpr char kStart[] = "START";
constexpr char kFinish[] = "FINISH";

constexpr std::string_view kStateField = "S:";

bool Holds(const std::vector<std::string>& tokens, const char* marker) {
  return std::find(tokens.begin(), tokens.end(), marker) != tokens.end();
}

}  // namespace

std::string F101Cmd::State() const {
  std::string state;
  for (const std::string& token : replyTokens_) {
    if (token.compare(0, kStateField.size(), kStateField) == 0) {
      state = token.substr(kStateField.size());
    }
  }
  return state;
}

TransactionStatus F160Cmd::Execute() {
  // The result is delivered once, with both lines.
  ResultCallback callback = std::exchange(resultCallback_, nullptr);
  const TransactionStatus status = CommandBase::Execute();
  resultCallback_ = std::move(callback);
  if (status == kReplied && replyOk_ && Holds(replyTokens_, kStart) &&
      !Holds(replyTokens_, kFinish)) {
    ParseReply(channel_->ReadAgain(interrupt_).text);
  }
  DeliverResult();
  return status;
}

ResultMap F160Cmd::GetResultMap() const {
  ResultMap markers;
  if (!replyOk_) return markers;
  for (const char* marker : {kStart, kFinish}) {
    if (Holds(replyTokens_, marker)) markers[marker] = marker;
  }
  return markers;
}

std::string F191Cmd::BuildRequest() const {
  std::string request = RequestHead();
  if (parameters_.size() == 1 && parameters_[0] == "2") {
    request += " S2";
  } else if (parameters_.size() == 5 && parameters_[0] == "1") {
    request += " S" + parameters_[0] + " C" + parameters_[1] + " D" + parameters_[2] + " SSID=<" +
               parameters_[3] + "> KEY=<" + parameters_[4] + ">";
  }
  return request + "\r\n";
}

std::string F196Cmd::BuildRequest() const {
  if (parameters_.size() != 1) return RequestHead() + "\r\n";
  return RequestHead() + " " + parameters_[0] + "\r\n";
}

std::string F355Cmd::BuildRequest() const {
  if (parameters_.size() != 2) return RequestHead() + "\r\n";
  return RequestHead() + " M" + parameters_[0] + "=" + parameters_[1] + "\r\n";
}

std::string F367Cmd::BuildRequest() const {
  if (parameters_.size() != 1) return RequestHead() + "\r\n";
  return RequestHead() + " =" + parameters_[0] + "\r\n";
}

}  // namespace Nuv::Command
