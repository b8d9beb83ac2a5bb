// Printers that say what no printer should, on the network and on USB.
#ifndef NUV_TESTS_API_HOSTILE_PRINTER_H_
#define NUV_TESTS_API_HOSTILE_PRINTER_H_

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <atomic>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Windows' own, which Asio brings in, is a macro.
#undef LoadLibrary

#include "tests/connect/scripted_connector.h"
#include "tests/support/protocol_page.h"
#include "tests/support/virtual_clock.h"

// What a query ends with that leaves by one of the documented exceptions.
constexpr int kThrows = -2;

// What a printer does with requests.
struct Behaviour {
  enum Way { kStays, kCloses, kResets, kDrips, kFloods };

  const char* name;
  // What it says, made of the right answer.
  std::string (*says)(std::string right);
  // How a query may end then. Two answers without a number for a code throw.
  std::set<int> ends;
  Way way = kStays;
};
inline void PrintTo(const Behaviour& behaviour, std::ostream* out) { *out << behaviour.name; }

// With all its numbers replaced; what looks like one in texts too.
inline std::string WithNumbers(const std::string& answer, const std::string& number) {
  constexpr size_t kHead = 5;
  return answer.substr(0, kHead) + std::regex_replace(answer.substr(kHead),
                                                      std::regex("([:=A-Z,])-?\\d+(?![\\d:])"),
                                                      "$01" + number);
}

inline const Behaviour kSound{"Sound", [](std::string right) { return right; }, {0}};
inline const Behaviour kBehaviours[] = {
    kSound,
    {"Refuses", [](std::string right) { return right.replace(5, 2, "NG"); }, {29}},
    {"ClosesAfterAccepting", [](std::string) { return std::string(); }, {1}, Behaviour::kCloses},
    {"ResetsWithinAReply",
     [](std::string right) { return right.substr(0, 6); },
     {1, 29},
     Behaviour::kResets},
    {"SaysAnotherCode", [](std::string right) { return "F999" + right.substr(4); }, {1}},
    {"SaysF", [](std::string) { return std::string("F\r\n"); }, {kThrows}},
    {"SaysFOk", [](std::string) { return std::string("F OK\r\n"); }, {kThrows}},
    {"SaysOneLetter", [](std::string) { return std::string(65536, 'F'); }, {kThrows}},
    {"SaysManyWords",
     [](std::string right) {
       std::string answer = right.substr(0, 7) + " ";
       while (answer.size() < 65534) answer += "S ";
       return answer + "\r\n";
     },
     {0, kThrows}},
    {"SaysNulBytes",
     [](std::string right) { return right.insert(6, std::string(600, '\0')); },
     {29}},
    {"SaysFortyDigits",
     [](std::string right) { return WithNumbers(right, std::string(40, '9')); },
     {0, 1, kThrows}},
    {"SaysNegativeNumbers",
     [](std::string right) { return WithNumbers(right, "-2147483648"); },
     {0, 1}},
    // Without a line end, so that "OK" may go on.
    {"SaysOneByteASecond",
     [](std::string right) { return right.substr(0, right.size() - 2); },
     {0, 29, kThrows},
     Behaviour::kDrips},
    {"SaysNothing", [](std::string) { return std::string(); }, {1}},
    {"SendsWithoutAPause",
     [](std::string) { return std::string(65536, 'x'); },
     {kThrows},
     Behaviour::kFloods},
};

// What a sound printer answers: the page's example for the request, or for its code. Empty when the
// line is no request.
inline std::string RightAnswer(const std::string& line) {
  static const std::map<std::string, std::string> kAnswers = [] {
    std::map<std::string, std::string> answers;
    for (const ProtocolPage::Row& row : ProtocolPage::Rows("Code")) {
      if (row["Request"].find("while") != std::string::npos) continue;
      const std::string request = ProtocolPage::Quoted(row["Request"]).at(0);
      const std::string reply = ProtocolPage::Quoted(row["Reply"]).at(0) + "\r\n";
      answers.emplace(request, reply);
      answers.emplace(request.substr(0, 4), reply);
    }
    return answers;
  }();
  const std::string request = line.substr(0, line.find('\r'));
  auto answer = kAnswers.find(request);
  if (answer == kAnswers.end()) answer = kAnswers.find(request.substr(0, 4));
  return answer == kAnswers.end() ? "" : answer->second;
}

// The printer on both links. One thread at a time uses it.
class HostilePrinter final : public VirtualPeer {
 public:
  explicit HostilePrinter(const std::string& address)
      : acceptor_(io_, Tcp::endpoint(asio::ip::make_address_v4(address), 0)) {
    acceptor_.non_blocking(true);
    port.printers = {{"SIM0000000001"}};
    port.onWrite = [this](const std::string& line) { OnUsbWrite(line); };
    port.onRead = [this] { OnUsbRead(); };
  }

  uint16_t Port() const { return acceptor_.local_endpoint().port(); }

  void Behaves(const Behaviour& behaviour) {
    behaviour_ = &behaviour;
    said_.clear();
    port.blocks.clear();
    port.readMs = behaviour.way == Behaviour::kDrips ? 1000 : 0;
    port.look = Nuv::Connect::LinkState::kAlive;
    port.writeStatus = behaviour.way == Behaviour::kCloses ? kNotOpen : 0;
  }

  // What it was asked until now.
  void Forget() {
    requests.clear();
    passes = 0;
    port.opened.clear();
    port.written.clear();
    port.quietWaits.clear();
  }

  Nuv::Connect::Port port;                      // on USB
  std::vector<std::string> requests;            // that it could answer
  std::atomic<int> passes{0};                   // connections, and what was written on USB
  std::chrono::milliseconds searchPatience{0};  // real time for others to answer

  std::optional<Nuv::Platform::Deadline> Serve(Nuv::Platform::Deadline now) override {
    Accept();
    if (!socket_) return std::nullopt;
    Read(now);
    switch (behaviour_->way) {
      case Behaviour::kStays:
        break;
      case Behaviour::kCloses:
        socket_.reset();
        return std::nullopt;
      case Behaviour::kResets:
        if (said_.empty()) break;
        Say(said_);
        said_.clear();
        socket_->set_option(asio::socket_base::linger(true, 0));
        socket_.reset();
        return std::nullopt;
      case Behaviour::kDrips:
        if (said_.empty() || now < next_)
          return said_.empty() ? std::nullopt : std::optional(next_);
        Say(said_.substr(0, 1));
        std::rotate(said_.begin(), said_.begin() + 1, said_.end());
        next_ = now + std::chrono::seconds(1);
        return next_;
      case Behaviour::kFloods:
        while (!said_.empty() && Say(said_)) {
        }
        return std::nullopt;
    }
    if (!said_.empty()) Say(said_);
    said_.clear();
    return std::nullopt;
  }

  bool IsReady(Nuv::Platform::Handle handle, Nuv::Platform::Readiness readiness) override {
    Nuv::Platform::Clock& clock = Nuv::Platform::SystemClock();
    const auto patience = saidNow_ ? std::chrono::milliseconds(50) : searchPatience;
    saidNow_ = false;
    return clock.WaitReady(handle, readiness, clock.Now() + patience, {}) ==
           Nuv::Platform::WaitEnd::kReady;
  }

 private:
  using Tcp = asio::ip::tcp;

  void Accept() {
    std::error_code none;
    Tcp::socket came(io_);
    acceptor_.accept(came, none);
    if (none) return;
    came.non_blocking(true);
    socket_.emplace(std::move(came));
    input_.clear();
    said_.clear();
    ++passes;
  }

  void Read(Nuv::Platform::Deadline now) {
    char bytes[4096];
    std::error_code error;
    size_t count = 0;
    while ((count = socket_->read_some(asio::buffer(bytes), error)) > 0) {
      input_.append(bytes, count);
    }
    for (size_t end = 0; (end = input_.find('\n')) != std::string::npos; input_.erase(0, end + 1)) {
      if (said_.empty()) next_ = now + std::chrono::seconds(1);
      said_ += Answer(input_.substr(0, end + 1));
    }
  }

  std::string Answer(const std::string& line) {
    const std::string right = RightAnswer(line);
    if (right.empty()) return {};
    requests.push_back(line);
    return behaviour_->says(right);
  }

  // False when the system takes no more.
  bool Say(const std::string& bytes) {
    std::error_code error;
    const size_t count = socket_->write_some(asio::buffer(bytes), error);
    saidNow_ = saidNow_ || count > 0;
    return count == bytes.size();
  }

  void OnUsbWrite(const std::string& line) {
    ++passes;
    said_ = Answer(line);
    port.blocks.clear();
    const size_t piece = behaviour_->way == Behaviour::kDrips ? 1 : kReadBytes;
    for (size_t at = 0; at < said_.size(); at += piece)
      port.blocks.push_back(said_.substr(at, piece));
    if (behaviour_->way == Behaviour::kCloses || behaviour_->way == Behaviour::kResets) {
      port.look = Nuv::Connect::LinkState::kEnded;
    }
  }
  // A printer that has nothing to say lets the host wait; some never come to an end.
  void OnUsbRead() {
    if (behaviour_->way == Behaviour::kDrips) {
      if (port.blocks.empty()) port.blocks.push_back("x");
    } else if (behaviour_->way == Behaviour::kFloods) {
      if (port.blocks.empty()) port.blocks.push_back(std::string(kReadBytes, 'x'));
    } else {
      port.readMs = port.blocks.empty() && port.look == Nuv::Connect::LinkState::kAlive ? 60000 : 0;
    }
  }

  const Behaviour* behaviour_ = &kSound;
  asio::io_context io_;
  Tcp::acceptor acceptor_;
  std::optional<Tcp::socket> socket_;
  std::string input_, said_;  // not yet read in lines; still to be said
  Nuv::Platform::Deadline next_{0};
  bool saidNow_ = false;
};

#endif  // NUV_TESTS_API_HOSTILE_PRINTER_H_
