// A printer at the far end of a loopback connection, in virtual time.
#ifndef NUV_TESTS_VIRTUAL_PRINTER_H_
#define NUV_TESTS_VIRTUAL_PRINTER_H_

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/peer.h"
#include "tests/support/virtual_clock.h"

// Answers request lines as it is told, each after a time of the clock. Takes nothing while it is
// stuck.
class VirtualPrinter final : public VirtualPeer {
 public:
  // What comes to a request, after so long; empty: nothing does.
  struct Answer {
    std::string text;
    std::chrono::milliseconds after{0};
  };

  uint16_t Port() const { return peer_.Port(); }

  std::function<Answer(const std::string& request)> answers = [](const auto&) { return Answer{}; };
  bool stuck = false;
  std::vector<std::string> requests;

  std::optional<Nuv::Platform::Deadline> Serve(Nuv::Platform::Deadline now) override {
    while (peer_.Accepts(0)) {
      input_.clear();
      due_.clear();
    }
    if (!stuck) Read(now);
    while (!due_.empty() && due_.front().first <= now) {
      peer_.Says(due_.front().second);
      due_.pop_front();
    }
    if (due_.empty()) return std::nullopt;
    return due_.front().first;
  }

 private:
  // Real time in which what the host has written is here.
  static constexpr int kPatienceMs = 10;

  void Read(Nuv::Platform::Deadline now) {
    input_ += peer_.ReadsAll(kPatienceMs);
    for (size_t end = 0; (end = input_.find('\n')) != std::string::npos;) {
      requests.push_back(input_.substr(0, end + 1));
      input_.erase(0, end + 1);
      Answer answer = answers(requests.back());
      if (!answer.text.empty()) due_.emplace_back(now + answer.after, std::move(answer.text));
    }
  }

  Peer peer_;
  std::string input_;
  std::deque<std::pair<Nuv::Platform::Deadline, std::string>> due_;
};

#endif  // NUV_TESTS_VIRTUAL_PRINTER_H_
