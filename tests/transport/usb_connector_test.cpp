#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <deque>

#include "tests/support/manual_clock.h"
#include "tests/transport/usb_lab.h"
#include "transport/usb_connector_linux.h"

namespace {

using ::testing::ElementsAre;

// A node on which every event is scripted: what a driver does and no file can be made to do.
struct ScriptedNode final : DeviceCalls {
  struct Input {
    std::string data;
    int error = 0;
    int events = POLLIN;
  };

  int Open(const std::string& node) override {
    opened.push_back(node);
    return openError == 0 ? 7 : -openError;
  }
  int64_t Read(int, uint8_t* buffer, size_t size) override {
    if (input.empty()) return -EAGAIN;
    const Input next = input.front();
    input.pop_front();
    if (next.error != 0) return -next.error;
    EXPECT_LE(next.data.size(), size);
    std::copy(next.data.begin(), next.data.end(), buffer);
    return static_cast<int64_t>(next.data.size());
  }
  int64_t Write(int, const uint8_t* data, size_t size) override {
    if (takes.empty()) return -EAGAIN;
    const int64_t count = std::min<int64_t>(takes.front(), static_cast<int64_t>(size));
    takes.pop_front();
    if (count > 0) written.append(reinterpret_cast<const char*>(data), static_cast<size_t>(count));
    input.insert(input.end(), answer.begin(), answer.end());
    answer.clear();
    return count;
  }
  int Poll(int, short events, int timeoutMs) override {
    ++polls;
    if ((events & POLLIN) != 0 && !input.empty()) return input.front().events;
    if ((events & POLLOUT) != 0 && outputEvents != 0) return outputEvents;
    clock.SleepFor(std::chrono::milliseconds(timeoutMs));
    return 0;
  }
  void Close(int) override { ++closed; }

  ManualClock clock;
  int openError = 0;
  std::deque<Input> input;    // readable now
  std::deque<Input> answer;   // readable after the next write
  std::deque<int64_t> takes;  // of each write, or an error
  int outputEvents = POLLOUT;
  std::string written;
  std::vector<std::string> opened;
  int closed = 0;
  int polls = 0;
};

class UsbConnectorTest : public UsbLab {
 protected:
  std::vector<std::wstring> Found() {
    EXPECT_TRUE(connector.SearchDevices());
    std::vector<std::wstring> paths{L"left over"};
    return connector.GetDevicePaths(paths);
  }
  void OpenScripted() {
    Attach(0, "11f1", "2601");
    ASSERT_TRUE(scripted.SearchDevices());
    ASSERT_TRUE(scripted.Open(L"0"));
  }
  static uint32_t Write(UsbConnectorLinux& to, const std::string& text, uint32_t timeoutMs = 3000) {
    return to.Write(reinterpret_cast<const uint8_t*>(text.data()),
                    static_cast<uint32_t>(text.size()), timeoutMs);
  }
  uint32_t Read(UsbConnectorLinux& from, uint32_t timeoutMs = 3000) {
    uint8_t buffer[kReadBytes + 1] = {};
    const uint32_t status = from.Read(buffer, timeoutMs);
    block = reinterpret_cast<const char*>(buffer);
    return status;
  }

  UsbConnectorLinux connector;
  ScriptedNode node;
  UsbConnectorLinux scripted{node.clock, node};
  std::string block;  // of the last read
};

TEST_F(UsbConnectorTest, ListsPrintersByTheNumberOfTheirNode) {
  EXPECT_THAT(Found(), ElementsAre());
  EXPECT_FALSE(connector.Open(L"0"));
  Attach(10, "11F1", "260A");
  Attach(9, "0999", "beaf");
  Attach(3, "11f1", "2605");  // not in the table
  Attach(2, "04f9", "0042");  // an office printer
  EXPECT_THAT(Found(), ElementsAre(L"/dev/usb/lp9\\1", L"/dev/usb/lp10\\1"));
  EXPECT_THAT(Found(), ElementsAre(L"/dev/usb/lp9\\1", L"/dev/usb/lp10\\1")) << "anew, not added";
  Detach(9);
  EXPECT_THAT(Found(), ElementsAre(L"/dev/usb/lp10\\1"));
}

TEST_F(UsbConnectorTest, OpensByDecimalText) {
  Attach(4, "11f1", "2601");
  Attach(5, "11f1", "2602");
  ASSERT_TRUE(scripted.SearchDevices());
  const struct {
    const wchar_t* text;
    const char* node;  // empty: refused
  } kRows[] = {{L"0", "/dev/usb/lp4"},
               {L"1", "/dev/usb/lp5"},
               {L" +1x", "/dev/usb/lp5"},
               {L"abc", "/dev/usb/lp4"},
               {L"2", ""},
               {L"-1", ""}};
  for (const auto& row : kRows) {
    node.opened.clear();
    EXPECT_EQ(scripted.Open(row.text), *row.node != '\0');
    EXPECT_EQ(node.opened.empty() ? "" : node.opened[0], row.node);
  }
  EXPECT_EQ(node.closed, 3) << "one node is open at a time";
  scripted.Close();
  scripted.Close();
  EXPECT_EQ(node.closed, 4);
}

TEST_F(UsbConnectorTest, TellsWhyANodeCannotBeOpened) {
  Attach(0, "11f1", "2601");
  ASSERT_TRUE(scripted.SearchDevices());
  setenv("NUVCONNECT_DEBUG", "1", 1);
  const struct {
    int error;
    const char* told;
  } kRows[] = {{EACCES, "udev rule"}, {EBUSY, "another program"}, {ENOENT, "not attached"}};
  for (const auto& row : kRows) {
    node.openError = row.error;
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(scripted.Open(L"0"));
    const std::string told = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("/dev/usb/lp0"), std::string::npos) << told;
    EXPECT_NE(told.find(row.told), std::string::npos) << told;
    EXPECT_EQ(Write(scripted, "x"), kNotOpen);
    EXPECT_EQ(Read(scripted), kNotOpen);
  }
  unsetenv("NUVCONNECT_DEBUG");
  node.openError = 0;
  EXPECT_TRUE(scripted.Open(L"0"));
}

TEST_F(UsbConnectorTest, TalksOverARealNode) {
  Attach(0, "11f1", "2601");
  ASSERT_THAT(Found(), ElementsAre(L"/dev/usb/lp0\\1"));
  ASSERT_TRUE(connector.Open(L"0"));
  EXPECT_EQ(Read(connector, 1), kTransferTimeout);
  ASSERT_EQ(write(Far(0), "late\r\n", 6), 6);
  ASSERT_EQ(Write(connector, "F101\r\n"), 0U);
  char line[16] = {};
  ASSERT_EQ(read(Far(0), line, sizeof line), 6);
  EXPECT_STREQ(line, "F101\r\n");
  ASSERT_EQ(write(Far(0), "F101 OK\r\n", 9), 9);
  EXPECT_EQ(Read(connector), 0U);
  EXPECT_EQ(block, "F101 OK\r\n") << "not the late reply";
  connector.Close();
  EXPECT_EQ(Write(connector, "x"), kNotOpen);
}

TEST_F(UsbConnectorTest, WritesTheWholeBlockOrFails) {
  const struct {
    const char* what;
    std::deque<int64_t> takes;
    int outputEvents;
    uint32_t status;
    const char* written;
    int64_t sleptMs;
  } kRows[] = {
      {"at once", {8}, POLLOUT, 0, "01234567", 0},
      {"in parts", {3, -EAGAIN, 1, -EINTR, 8}, POLLOUT, 0, "01234567", 0},
      {"not taken", {}, 0, kTransferTimeout, "", 500},
      {"taken by the driver only", {8}, 0, kTransferTimeout, "01234567", 500},
      {"partly taken", {3, -EAGAIN}, 0, kTransferTimeout, "012", 500},
      {"error", {3, -EIO}, POLLOUT, EIO, "012", 0},
      {"gone", {-ENODEV}, POLLOUT, ENODEV, "", 0},
      {"gone while it waits", {3, -EAGAIN}, POLLOUT | POLLHUP, ENODEV, "012", 0},
      {"gone before the end", {8}, POLLOUT | POLLHUP, ENODEV, "01234567", 0},
  };
  OpenScripted();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    node.takes = row.takes;
    node.outputEvents = row.outputEvents;
    node.written.clear();
    const int64_t before = node.clock.SleptMs();
    EXPECT_EQ(Write(scripted, "01234567", 500), row.status);
    EXPECT_EQ(node.written, row.written);
    EXPECT_EQ(node.clock.SleptMs() - before, row.sleptMs);
  }
  EXPECT_EQ(Write(scripted, ""), 0U);
}

TEST_F(UsbConnectorTest, ReadsOneBlockWithinTheLimit) {
  using Inputs = std::deque<ScriptedNode::Input>;
  const struct {
    const char* what;
    Inputs input;
    uint32_t status;
    const char* block;
    int64_t sleptMs;
  } kRows[] = {
      {"a block", {{"one"}}, 0, "one", 0},
      {"packets without content first", {{""}, {""}, {"one"}}, 0, "one", 0},
      {"nothing", {}, kTransferTimeout, "", 500},
      {"only a packet without content", {{""}}, kTransferTimeout, "", 500},
      {"interrupted", {{"", EINTR}, {"one"}}, 0, "one", 0},
      {"gone", {{"", EIO}}, kTransferTimeout, "", 0},
      {"gone, told by both", {{"", ENODEV, POLLIN | POLLHUP}}, kTransferTimeout, "", 0},
      {"gone, nothing to read", {{"", EAGAIN, POLLHUP}}, kTransferTimeout, "", 0},
      {"gone, as a terminal tells it", {{"", 0, POLLIN | POLLHUP}}, kTransferTimeout, "", 0},
      {"last words", {{"bye", 0, POLLIN | POLLHUP}}, 0, "bye", 0},
  };
  OpenScripted();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    node.input = row.input;
    const int64_t before = node.clock.SleptMs();
    EXPECT_EQ(Read(scripted, 500), row.status);
    EXPECT_EQ(block, row.block);
    EXPECT_EQ(node.clock.SleptMs() - before, row.sleptMs);
    EXPECT_TRUE(node.input.empty());
  }
}

TEST_F(UsbConnectorTest, ThrowsAwayALateReplyWithItsRest) {
  OpenScripted();
  node.input = {{"late "}, {""}, {"reply\r\n"}};
  node.answer = {{"mine\r\n"}};
  node.takes = {100};
  ASSERT_EQ(Write(scripted, "F102\r\n"), 0U);
  EXPECT_EQ(Read(scripted), 0U);
  EXPECT_EQ(block, "mine\r\n");
}

TEST_F(UsbConnectorTest, IsUsableAfterUnpluggingAndAgainAfterReplugging) {
  OpenScripted();
  node.outputEvents = POLLOUT | POLLHUP;
  for (int i = 0; i < 3; ++i) {
    node.input = {{"", i == 0 ? EIO : ENODEV, i == 1 ? POLLIN : POLLIN | POLLHUP}};
    node.takes = {i == 0 ? -EIO : -ENODEV};
    EXPECT_EQ(Read(scripted), kTransferTimeout);
    EXPECT_EQ(Write(scripted, "x"), static_cast<uint32_t>(i == 0 ? EIO : ENODEV));
  }
  EXPECT_EQ(node.clock.SleptMs(), 0) << "a printer that has gone is not waited for";
  EXPECT_LT(node.polls, 20);
  scripted.Close();
  node.outputEvents = POLLOUT;
  node.takes = {1};
  ASSERT_TRUE(scripted.Open(L"0"));
  EXPECT_EQ(Write(scripted, "x"), 0U);
}

}  // namespace
