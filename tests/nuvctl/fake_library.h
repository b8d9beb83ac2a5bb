// A framework behind NuvConnect5's exports that follows a script, and a system whose clock and
// Ctrl-C the test moves.
#ifndef NUVCTL_FAKE_LIBRARY_H_
#define NUVCTL_FAKE_LIBRARY_H_

#include <array>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "command_line.h"
#include "nuvconnect/NuvConnect5.h"
#include "tests/support/fake_framework.h"

using Nuv::Connect::Reaction;
using Nuv::Connect::Strings;

// Answers of a sequence are used up one by one; the last one stays.
template <typename Answer>
struct Sequence {
  std::vector<Answer> answers;
  size_t next = 0;
  Answer Take() { return answers[next + 1 < answers.size() ? next++ : next]; }
};

struct StateAnswer {
  int result, state, errorNumber;
};
struct ProgressAnswer {
  int layer, percent, minutesLeft;
};
struct MarkAnswer {
  int result, index, bytes;
};

struct FakeLibrary {
  // Script. Devices are address, serial number, model, nickname.
  std::vector<std::array<std::string, 4>> devices = {{"10.0.0.1", "SN1", "Fabrix100 xP", ""}};
  int kind = NUV_KIND_NETWORK;  // where the devices are
  int listResult = 0;           // 3: devices is what was reached
  int missedSearches = 0;       // in which no device is found
  int openResult = 0;
  bool malformed = false;  // the state's reply holds no number
  Sequence<StateAnswer> states{{{0, 0, 0}}};
  int progressResult = 0;
  Sequence<ProgressAnswer> progress{{{12, 34, 56}}};
  std::string reply;
  Sequence<MarkAnswer> marks{{{0, 6, 10}, {0, 7, 1000}}};
  int sendResult = 0;
  std::vector<int> sent = {500, 1000};  // of 1000 bytes
  std::function<void(size_t)> beforeStep = [](size_t) {};
  std::function<void()> atEnd = [] {};
  std::map<int, int> results;    // of queries and orders, by command number
  int reopened = 0;              // how often the connection was made anew
  int answersWhenReopened = -1;  // so many times until command 101 is answered
  bool forgetful = false;        // settings are accepted, but not kept
  std::map<std::string, Strings> settings = {{"NickName", {"Lab one"}},
                                             {"Parameter0", {"80"}},  // laser power
                                             {"Parameter1", {"5"}},   // Z compensation
                                             {"LastUpdatedIndex", {"3"}},
                                             {"BCPScaling", {"1.1", "1", "1", "1", "1", "0.998"}}};
  int oldestJob = 1, jobResult = 0;
  std::vector<std::string> accessPoints = {"Lab net", "Office"};
  std::string outOfReach;     // an access point
  Sequence<int> joined{{0}};  // to an access point

  // Record.
  std::vector<std::string> calls;  // what was opened, sent and closed, in order
  std::string image;               // the firmware that came through
  Nuv::Connect::Record record;
};
extern FakeLibrary g_fake;

// Puts it behind the exports, until they close it.
void UseFakeLibrary();

struct FakeSystem final : NuvCtl::System {
  int64_t NowMs() override { return now; }
  void SleepMs(int64_t milliseconds) override { now += milliseconds; }
  bool ErrorIsTerminal() override { return terminal; }
  bool OutputIsTerminal() override { return terminal; }
  bool InputIsTerminal() override { return terminal; }
  int ErrorWidth() override { return width; }
  int OutputWidth() override { return outputWidth; }
  std::optional<std::string> Ask(const std::string& question) override {
    prompt = question;
    return answer;
  }
  std::optional<std::string> ReadSecret(const std::string& text) override {
    prompt = text;
    return secret;
  }
  void WatchInterrupts(bool watch) override { watched = watch; }
  bool Interrupted() override { return watched && interrupted; }
  void SetEnvironment(const char* name, const char*) override { environment += name; }

  int64_t now = 0;
  bool terminal = false, watched = false, interrupted = false;
  int width = 80;
  int outputWidth = 80;
  std::string environment, prompt;
  std::optional<std::string> secret, answer;
};

// One run of nuvctl against the fake.
struct CommandRun {
  CommandRun(const std::vector<std::string>& arguments, FakeSystem& system);
  // Throws when the standard output is anything but one JSON document.
  nlohmann::json Json() const { return nlohmann::json::parse(out); }

  int exit;
  std::string out, err;
  bool closed;  // the library, by nuvctl
};

#endif  // NUVCTL_FAKE_LIBRARY_H_
