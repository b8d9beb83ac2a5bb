#ifndef NUV_TESTS_SCRIPTED_CHANNEL_H_
#define NUV_TESTS_SCRIPTED_CHANNEL_H_

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/channel_stub.h"

// A channel whose printer answers from a script, and a record of what went over it.
class ScriptedChannel final : public ChannelStub {
 public:
  // The next replies to commands and to reads without a command, in order; none left: silence.
  void Replies(const std::vector<std::string>& replies) {
    replies_.insert(replies_.end(), replies.begin(), replies.end());
  }
  // The reply to every request that begins with `head`; used when the list above is empty.
  void Always(const std::string& head, const std::string& reply) { always_[head] = reply; }

  // Everything that happened: request lines and data as sent, "<read>", "<open>", "<look>" when the
  // link was found ended.
  const std::vector<std::string>& Wire() const { return wire_; }
  // What was sent with SendBytes.
  std::string Data() const {
    std::string data;
    for (const std::string& block : blocks_) data += block;
    return data;
  }
  size_t Blocks() const { return blocks_.size(); }

  bool opens = true;         // what OpenDevice answers
  int endsAfterBlocks = -1;  // the printer ends the link behind so many SendBytes; -1 never
  Nuv::Connect::JobKind job = Nuv::Connect::JobKind::kNone;
  bool endedComplete = false;
  bool lastIsAgain = false;         // whether the last request throws nothing away
  int writesUntilFailure = -1;      // SendBytes fails after so many; -1 never
  std::function<void()> onExecute;  // called before each command is answered

  Nuv::Connect::Reply Transact(const Nuv::Connect::Request& request) override {
    wire_.push_back(request.line);
    lastIsAgain = request.again;
    if (onExecute) onExecute();
    return Answer(request.line);
  }
  Nuv::Connect::Reply ReadAgain(Nuv::Platform::Interrupt*) override {
    wire_.emplace_back("<read>");
    return Answer("");
  }
  Nuv::Connect::LinkLook Look() override {
    if (Ended()) wire_.emplace_back("<look>");
    return {!Ended(), unconfirmed_};
  }
  void BeginJob(Nuv::Connect::JobKind kind, Nuv::Platform::Interrupt*) override { job = kind; }
  void EndJob(bool complete) override {
    job = Nuv::Connect::JobKind::kNone;
    endedComplete = complete;
  }
  Nuv::Connect::Reason Send(const std::vector<uint8_t>& bytes) override {
    if (writesUntilFailure == 0) return Nuv::Connect::Reason::kNotTaken;
    if (writesUntilFailure > 0) --writesUntilFailure;
    blocks_.emplace_back(bytes.begin(), bytes.end());
    wire_.push_back(blocks_.back());
    unconfirmed_ = true;
    return Nuv::Connect::Reason::kNone;
  }
  Nuv::Connect::Reason Reopen() override {
    wire_.emplace_back("<open>");
    unconfirmed_ = false;
    return opens ? Nuv::Connect::Reason::kNone : Nuv::Connect::Reason::kUnreachable;
  }

 private:
  bool Ended() const {
    return endsAfterBlocks >= 0 && blocks_.size() >= static_cast<size_t>(endsAfterBlocks);
  }
  Nuv::Connect::Reply Answer(const std::string& request) {
    using Nuv::Connect::Reason;
    if (Ended()) return {{}, Reason::kEnded};
    std::string reply = Next(request);
    if (reply.empty()) return {{}, Reason::kSilence};
    unconfirmed_ = false;
    return {std::move(reply)};
  }
  std::string Next(const std::string& request) {
    if (!replies_.empty()) {
      std::string reply = replies_.front();
      replies_.pop_front();
      return reply;
    }
    for (const auto& [head, reply] : always_) {
      if (request.compare(0, head.size(), head) == 0) return reply;
    }
    return {};
  }

  std::deque<std::string> replies_;
  std::map<std::string, std::string> always_;
  std::vector<std::string> wire_;
  std::vector<std::string> blocks_;
  bool unconfirmed_ = false;
};

#endif  // NUV_TESTS_SCRIPTED_CHANNEL_H_
