#ifndef NUV_TESTS_SCRIPTED_CHANNEL_H_
#define NUV_TESTS_SCRIPTED_CHANNEL_H_

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "nuvconnect/IConnect.h"

// A channel whose printer answers from a script, and a record of what went over it.
class ScriptedChannel final : public Nuv::Connect::IConnect {
 public:
  // The next replies to commands and to reads without a command, in order; none left: silence.
  void Replies(std::initializer_list<std::string> replies) {
    replies_.insert(replies_.end(), replies);
  }
  // The reply to every request that begins with `head`; used when the list above is empty.
  void Always(const std::string& head, const std::string& reply) { always_[head] = reply; }

  // Everything that happened: request lines and data as sent, "<read>", "<open>".
  const std::vector<std::string>& Wire() const { return wire_; }
  // What was sent with SendBytes.
  std::string Data() const {
    std::string data;
    for (const std::string& block : blocks_) data += block;
    return data;
  }
  size_t Blocks() const { return blocks_.size(); }

  bool opens = true;                // what OpenDevice answers
  int writesUntilFailure = -1;      // SendBytes fails after so many; -1 never
  std::function<void()> onExecute;  // called before each command is answered

  std::string ExecuteCommand(std::string command) override {
    wire_.push_back(command);
    if (onExecute) onExecute();
    return Next(command);
  }
  std::string ReceiveReply() override {
    wire_.emplace_back("<read>");
    return Next("");
  }
  bool SendBytes(std::vector<uint8_t> bytes) override {
    if (writesUntilFailure == 0) return false;
    if (writesUntilFailure > 0) --writesUntilFailure;
    blocks_.emplace_back(bytes.begin(), bytes.end());
    wire_.push_back(blocks_.back());
    return true;
  }
  bool OpenDevice() override {
    wire_.emplace_back("<open>");
    return opens;
  }

  bool SearchDevices(std::vector<std::string>&, std::string, std::string, int) override {
    return false;
  }
  bool EnumerateDevices(int, std::vector<std::string>&) override { return false; }
  bool ReadLocalData(std::vector<uint8_t>&) override { return false; }
  bool ChooseDevice(int, int) override { return false; }
  bool CloseDevice() override { return true; }
  void SetLocalOption(int) override {}
  void SetSearchTimeout(int) override {}
  void SetSearchPort(int) override {}
  void SetSearchMessage(std::string) override {}

 private:
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
};

#endif  // NUV_TESTS_SCRIPTED_CHANNEL_H_
