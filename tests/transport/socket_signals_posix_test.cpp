// Waits of the local link's sockets in a host that handles signals.

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "tests/transport/peer.h"
#include "transport/tcp_client_socket.h"

using namespace Nuv::Transport;

namespace {

// Signals to the thread that made it, every few milliseconds, until the end or `kMost` of them.
class Signals {
 public:
  static constexpr int kMost = 500;

  Signals() {
    struct sigaction action = {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    thread_ = std::thread([this, target = pthread_self()] {
      while (!over_ && sent_ < kMost) {
        pthread_kill(target, SIGUSR1);
        ++sent_;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    });
  }
  ~Signals() {
    over_ = true;
    thread_.join();
  }
  int Sent() const { return sent_; }

 private:
  std::atomic<int> sent_{0};
  std::atomic<bool> over_{false};
  std::thread thread_;
};

TEST(SocketSignalsTest, WaitGoesOnWithTheTimeThatIsLeft) {
  const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter();
  const SocketSystem::Handle silent = SocketSystem::Create(SocketSystem::Kind::kUdp);
  const Signals alarms;
  EXPECT_FALSE(waiter.Until(waiter.In(50), silent, Nuv::Platform::Readiness::kInput));
  EXPECT_LT(alarms.Sent(), Signals::kMost) << "it waited as long as there were signals";
  SocketSystem::Close(silent);
}

TEST(SocketSignalsTest, WriteIsNotCut) {
  constexpr size_t kBytes = size_t{32} << 20;
  const std::string line(kBytes, 'x');
  Peer peer;
  TcpClientSocket socket;
  const Signals alarms;
  ASSERT_TRUE(socket.Connect("", peer.Port()));
  peer.Accept();
  std::thread reader([&] { EXPECT_EQ(peer.Reads(kBytes).size(), kBytes); });
  EXPECT_EQ(socket.Send(line.data(), static_cast<int>(kBytes)), 0);
  reader.join();
}

}  // namespace
