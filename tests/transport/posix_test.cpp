// What only this system can show: waits and writes in a host that handles signals, and how sockets
// are set.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "platform/waiter.h"
#include "tests/support/open_sockets.h"
#include "tests/support/peer.h"
#include "transport/tcp_client_socket.h"
#include "transport/tcp_device_connector.h"
#include "transport/usb_connector_linux.h"

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

class SignalsTest : public ::testing::Test {
 protected:
  SignalsTest() { EXPECT_EQ(pipe(ends), 0); }

  int ends[2] = {-1, -1};
  const Signals sent;
};

TEST_F(SignalsTest, WaitGoesOnWithTheTimeThatIsLeft) {
  const Nuv::Platform::Waiter& waiter = Nuv::Platform::SystemWaiter();
  EXPECT_FALSE(waiter.Until(waiter.In(50), ends[0], Nuv::Platform::Readiness::kInput));
  EXPECT_LT(sent.Sent(), Signals::kMost) << "it waited as long as there were signals";
}

// The driver takes a block and reports an interruption all the same; a pipe that is full stands for
// it, since its writer is interrupted as well.
TEST_F(SignalsTest, NoneEndsAWriteToTheDriver) {
  const std::string more(static_cast<size_t>(fcntl(ends[1], F_GETPIPE_SZ)) + 1, 'x');
  std::thread printer([this] {
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1);  // so the writer is at it
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    while (read(ends[0], &byte, 1) == 1) {
    }
  });
  const auto* const bytes = reinterpret_cast<const uint8_t*>(more.data());
  EXPECT_EQ(SystemDeviceCalls().Write(ends[1], bytes, more.size()),
            static_cast<int64_t>(more.size()));
  close(ends[1]);
  printer.join();
}

// Each waits for its reply, which the system's delay would be added to.
TEST(TcpSocketTest, RequestsGoOutAtOnce) {
  Peer peer;
  TcpClientSocket socket;
  TcpDeviceConnector connector;
  ASSERT_TRUE(socket.Connect("", peer.Port()) && connector.Connect("127.0.0.1", peer.Port()));
  EXPECT_EQ(SocketsWithoutDelay(), 2);
}

}  // namespace
