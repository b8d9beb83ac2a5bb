#include "transport/usb_connector_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "tests/wine/usb_device.h"

using namespace Nuv::Transport;

namespace {

using ::testing::ElementsAre;

constexpr uint32_t kWaitMs = 3000;
constexpr uint32_t kShortMs = 100;

// A printer on the pipe that answers what the test lets it answer.
class PipePrinter {
 public:
  using Answer = std::function<std::string(const std::string& request)>;

  // `greeting`: what it still has to say when a host opens the device.
  explicit PipePrinter(Answer answer, std::string greeting = {})
      : thread_([this, answer, greeting] { Serve(answer, greeting); }) {
    ready_.get_future().wait();
  }
  ~PipePrinter() {
    ended_ = true;
    thread_.join();
  }
  // Returns once so many hosts have closed the device and the next may open it.
  void AwaitClosed(int hosts) const {
    std::unique_lock<std::mutex> lock(mutex_);
    closing_.wait(lock, [&] { return closed_ >= hosts; });
  }
  int Closed() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return closed_;
  }
  PipePrinter(const PipePrinter&) = delete;
  PipePrinter& operator=(const PipePrinter&) = delete;

 private:
  void Serve(const Answer& answer, std::string greeting) {
    Wine::DevicePipe pipe;
    ready_.set_value();
    std::string request;
    while (!ended_) {
      if (!pipe.Receive(request)) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++closed_;
        closing_.notify_all();
      }
      if (pipe.Connected() && !greeting.empty()) pipe.Send(std::exchange(greeting, {}));
      if (!request.empty()) pipe.Send(answer(request));
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  std::promise<void> ready_;
  std::atomic<bool> ended_{false};
  mutable std::mutex mutex_;
  mutable std::condition_variable closing_;
  int closed_ = 0;
  std::thread thread_;
};

std::string Echo(const std::string& request) { return request; }

class UsbConnectorTest : public ::testing::Test {
 protected:
  void Attach(const std::wstring& id, const std::wstring& serial = L"S1",
              const std::wstring& port = L"USB(1)") {
    devices.push_back(std::make_unique<Wine::RegisteredDevice>(id, serial, L"USB\\" + id, port));
  }
  void AttachTwo() {
    for (const wchar_t* serial : {L"S1", L"S2"}) Attach(L"VID_11F1&PID_2601", serial);
    ASSERT_TRUE(connector.SearchDevices());
  }
  std::vector<std::wstring> Found() {
    EXPECT_TRUE(connector.SearchDevices());
    std::vector<std::wstring> paths{L"left over"};
    return connector.GetDevicePaths(paths);
  }
  std::wstring PathOf(size_t device) const { return devices[device]->InterfacePath() + L"\\1"; }
  uint32_t Write(const std::string& text, uint32_t timeoutMs = kWaitMs) {
    return connector.Write(reinterpret_cast<const uint8_t*>(text.data()),
                           static_cast<uint32_t>(text.size()), timeoutMs);
  }
  uint32_t Read(uint32_t timeoutMs = kWaitMs) {
    uint8_t buffer[kReadBytes + 1] = {};
    const uint32_t status = connector.Read(buffer, timeoutMs);
    block = reinterpret_cast<const char*>(buffer);
    return status;
  }
  // The block that the printer sends for `request`.
  std::string Exchange(const std::string& request) {
    EXPECT_EQ(Write(request), 0U);
    EXPECT_EQ(Read(), 0U);
    return block;
  }
  void Open() {
    Attach(L"VID_11F1&PID_2601");
    ASSERT_TRUE(connector.SearchDevices());
    ASSERT_TRUE(connector.Open(L"0"));
  }

  std::vector<std::unique_ptr<Wine::RegisteredDevice>> devices;
  UsbConnectorWin connector;
  std::string block;  // of the last read
};

TEST_F(UsbConnectorTest, ListsPrintersOfTheTable) {
  EXPECT_THAT(Found(), ElementsAre());
  EXPECT_FALSE(connector.Open(L"0"));
  Attach(L"VID_04F9&PID_0042");  // an office printer
  Attach(L"VID_11F1&PID_2605");  // not in the table
  Attach(L"VID_11F1&PID_260A");
  devices.push_back(
      std::make_unique<Wine::RegisteredDevice>(L"VID_11F1&PID_2602", L"S1", L""));  // without an ID
  Attach(L"vid_0999&pid_beaf");
  EXPECT_EQ(Found().size(), 2U);
  EXPECT_THAT(Found(), ::testing::UnorderedElementsAre(PathOf(2), PathOf(4))) << "anew, not added";
  devices.pop_back();
  EXPECT_THAT(Found(), ElementsAre(PathOf(2)));
}

TEST_F(UsbConnectorTest, OpensByDecimalText) {
  const PipePrinter printer(Echo);
  AttachTwo();
  int opened = 0;
  for (const wchar_t* text : {L"0", L"1", L" +1x", L"abc"}) {
    ASSERT_TRUE(connector.Open(text)) << text;
    EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n") << text;
    connector.Close();
    connector.Close();
    printer.AwaitClosed(++opened);
  }
  EXPECT_FALSE(connector.Open(L"2"));
  EXPECT_FALSE(connector.Open(L"-1"));
  EXPECT_EQ(Write("x"), kNotOpen);
  EXPECT_EQ(Read(), kNotOpen);
}

TEST_F(UsbConnectorTest, KeepsWhatIsOpenUntilTheNextStands) {
  const PipePrinter printer(Echo);
  AttachTwo();
  EXPECT_NE(connector.Identity(0), connector.Identity(1));
  EXPECT_EQ(connector.Identity(2), "");
  EXPECT_EQ(connector.Look(), LinkState::kClosed);
  const bool isFirst = connector.Identity(0).find("#s1#") != std::string::npos;
  ASSERT_TRUE(connector.Open(isFirst ? L"0" : L"1"));
  devices.pop_back();
  EXPECT_TRUE(connector.Open(isFirst ? L"0" : L"1"));
  EXPECT_FALSE(connector.Open(isFirst ? L"1" : L"0")) << "it has gone";
  EXPECT_FALSE(connector.Open(L"99"));
  EXPECT_EQ(connector.Look(), LinkState::kAlive);
  EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n");
  EXPECT_EQ(printer.Closed(), 0);
}

TEST_F(UsbConnectorTest, ReopensOnlyThePrinterThatWasOpen) {
  const struct {
    const char* what;
    bool unplugs;  // whereupon this is plugged in:
    const wchar_t* serial;
    const wchar_t* port;
    bool inJob;  // reopened there
    bool idle;   // and elsewhere, also by its place in the list
  } kRows[] = {{"closed", false, L"S1", L"USB(1)", true, true},
               {"plugged in anew", true, L"S1", L"USB(1)", false, true},
               {"another port", true, L"S1", L"USB(2)", false, false},
               {"another printer", true, L"S2", L"USB(1)", false, false}};
  const PipePrinter printer(Echo);
  EXPECT_FALSE(connector.Reopen(false)) << "none was opened";
  int opened = 0;
  for (const auto& row : kRows) {
    for (const bool inJob : {true, false}) {
      SCOPED_TRACE(std::string(row.what) + (inJob ? " in a job" : ""));
      Open();
      const std::string listed = connector.Identity(0);
      if (row.unplugs) {
        devices.clear();
        EXPECT_EQ(connector.Look(), LinkState::kEnded);
      }
      connector.Close();
      printer.AwaitClosed(++opened);
      if (row.unplugs) Attach(L"VID_11F1&PID_2601", row.serial, row.port);
      EXPECT_EQ(connector.Reopen(inJob), inJob ? row.inJob : row.idle);
      EXPECT_EQ(connector.Open(L"0"), row.idle);
      EXPECT_EQ(connector.Identity(0), listed) << "the list stays as it was";
      EXPECT_EQ(connector.Look(), row.idle ? LinkState::kAlive : LinkState::kClosed);
      connector.Close();
      if (row.idle) printer.AwaitClosed(++opened);
      devices.clear();
    }
  }
}

TEST_F(UsbConnectorTest, WritesTheWholeBlockOrFails) {
  const std::string megabyte(1 << 20, 'x');
  size_t taken = 0;
  {
    const PipePrinter printer([&](const std::string& request) {
      taken += request.size();
      return taken == megabyte.size() ? std::string("all") : std::string();
    });
    Open();
    EXPECT_EQ(Exchange(megabyte), "all");
    connector.Close();
  }
  // One that takes nothing: its end of the pipe exists and is never read.
  Wine::DevicePipe stuck;
  ASSERT_TRUE(connector.Open(L"0"));
  EXPECT_EQ(Write(megabyte, kShortMs), kTransferTimeout);
  EXPECT_EQ(Write(megabyte, kShortMs), kTransferTimeout) << "the first left nothing pending";
  // What answers to the part that it took is no answer to what follows.
  std::string request;
  stuck.Receive(request);
  stuck.Send("late\r\n");
  EXPECT_EQ(Write("F102\r\n"), 0U);
  stuck.Receive(request);
  EXPECT_EQ(request, "F102\r\n");
  stuck.Send("mine\r\n");
  EXPECT_EQ(Read(), 0U);
  EXPECT_EQ(block, "mine\r\n");
}

TEST_F(UsbConnectorTest, ReadsOneBlockWithinTheLimit) {
  const PipePrinter printer([](const std::string& request) {
    if (request == "none") return std::string();
    return std::string(static_cast<size_t>(std::stoi(request)), 'y');
  });
  Open();
  EXPECT_EQ(Read(kShortMs), kTransferTimeout);
  EXPECT_EQ(Write("none"), 0U);
  EXPECT_EQ(Read(kShortMs), kTransferTimeout);
  EXPECT_EQ(block, "");
  EXPECT_EQ(Exchange("700"), std::string(kReadBytes, 'y'))
      << "as after a time-out nothing is pending";
  EXPECT_EQ(Read(), 0U);
  EXPECT_EQ(block, std::string(700 - kReadBytes, 'y'));
}

TEST_F(UsbConnectorTest, ThrowsAwayALateReplyWithItsRest) {
  const PipePrinter printer(
      [](const std::string& request) {
        return request == "twice" ? std::string(600, 'z') : request;
      },
      "for the host before\r\n");
  Open();
  EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n");
  // The rest stands behind the block that is read.
  EXPECT_EQ(Exchange("twice"), std::string(kReadBytes, 'z'));
  EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n");
  EXPECT_FALSE(connector.DiscardUntilQuiet(kShortMs, kWaitMs));
  EXPECT_EQ(Write("F102\r\n"), 0U);
  EXPECT_TRUE(connector.DiscardUntilQuiet(kShortMs, kWaitMs));
}

TEST_F(UsbConnectorTest, ReadsNoLongerThanItsCallerWaits) {
  const PipePrinter printer(Echo);
  Open();
  Nuv::Platform::Waiter waiter;
  connector.SetWaiter(waiter);
  std::thread impatient([&] { waiter.GiveUp(); });
  EXPECT_EQ(Read(600000), kTransferTimeout);
  impatient.join();
  connector.SetWaiter(Nuv::Platform::SystemWaiter());
  EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n") << "nothing is pending";
}

TEST_F(UsbConnectorTest, IsUsableAfterUnpluggingAndAgainAfterReplugging) {
  auto printer = std::make_unique<PipePrinter>(Echo);
  Open();
  std::thread unplugging([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    printer.reset();
    devices.clear();
  });
  Read();
  unplugging.join();
  EXPECT_EQ(block, "");
  EXPECT_NE(Write("F102\r\n", kShortMs), 0U);
  connector.Close();
  EXPECT_FALSE(connector.Open(L"0"));
  EXPECT_THAT(Found(), ElementsAre());
  printer = std::make_unique<PipePrinter>(Echo);
  Open();
  EXPECT_EQ(Exchange("F102\r\n"), "F102\r\n");
}

TEST_F(UsbConnectorTest, HoldsNoHandleOfADeviceThatWasClosed) {
  const PipePrinter printer(Echo);
  Open();
  connector.Close();
  DWORD before = 0, after = 0;
  GetProcessHandleCount(GetCurrentProcess(), &before);
  for (int i = 1; i <= 20; ++i) {
    printer.AwaitClosed(i);
    EXPECT_TRUE(connector.SearchDevices());
    EXPECT_TRUE(connector.Open(L"0"));
    EXPECT_EQ(Read(1), kTransferTimeout);
    connector.Close();
  }
  GetProcessHandleCount(GetCurrentProcess(), &after);
  EXPECT_EQ(after, before);
}

}  // namespace
