#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <deque>

#include "tests/support/told.h"
#include "tests/support/virtual_clock.h"
#include "tests/transport/usb_lab.h"
#include "transport/usb_connector_linux.h"

using namespace Nuv::Transport;

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// A node on which every event is scripted: what a driver does and no file can be made to do.
struct ScriptedNode final : DeviceCalls, VirtualPeer {
  using Deadline = Nuv::Platform::Deadline;

  explicit ScriptedNode(const std::map<std::string, UsbAddress>& of) : attached(of) {}
  struct Input {
    std::string data;
    int error = 0;
    int events = POLLIN;
    int afterMs = 0;  // from when it is first waited for
  };

  int Open(const std::string& node) override {
    opened.push_back(node);
    if (openError != 0) return -openError;
    if (attached.count(node) == 0) return -ENOENT;
    outputEvents = POLLOUT;
    ++handles;
    return ++last;
  }
  int AddressOf(int, UsbAddress& address) override {
    address = attached.at(opened.back());
    return 0;
  }
  int64_t Read(int, uint8_t* buffer, size_t size) override {
    if (input.empty()) return -EAGAIN;
    const Input next = input.front();
    input.pop_front();
    due.reset();
    if (next.error != 0) return -next.error;
    EXPECT_LE(next.data.size(), size);
    std::copy(next.data.begin(), next.data.end(), buffer);
    return static_cast<int64_t>(next.data.size());
  }
  int64_t Write(int, const uint8_t* data, size_t size) override {
    EXPECT_LE(size, 8192U) << "what the driver takes at once";
    if (takes.empty()) return -EAGAIN;
    const int64_t count = std::min<int64_t>(takes.front(), static_cast<int64_t>(size));
    takes.pop_front();
    if (count > 0) written.append(reinterpret_cast<const char*>(data), static_cast<size_t>(count));
    return count;
  }
  int Poll(int fd, short events) override {
    ++polls;
    if (fd == dead) return (events & POLLOUT) | POLLHUP;
    if ((events & POLLIN) == 0) return outputEvents & (events != 0 ? ~0 : ~POLLOUT);
    return HasInput() ? input.front().events : 0;
  }
  void Close(int) override {
    ++closed;
    --handles;
  }

  // What is still to come is due from when it is first waited for.
  std::optional<Deadline> Serve(Deadline now) override {
    if (!due && !input.empty()) due = now + std::chrono::milliseconds(input.front().afterMs);
    return due;
  }
  bool IsReady(Nuv::Platform::Handle fd, Nuv::Platform::Readiness readiness) override {
    if (fd == dead) return true;
    if (readiness == Nuv::Platform::Readiness::kOutput) return outputEvents != 0;
    return HasInput();
  }
  bool HasInput() const { return !input.empty() && due && *due <= clock.Now(); }

  VirtualClock clock{this};
  std::optional<Deadline> due;  // of the next input
  const std::map<std::string, UsbAddress>& attached;
  int openError = 0;
  int last = 0;               // handle that was opened
  int dead = 0;               // that of a printer that was unplugged
  std::deque<Input> input;    // readable now
  std::deque<int64_t> takes;  // of each write, or an error
  int outputEvents = POLLOUT;
  std::string written;
  std::vector<std::string> opened;
  int closed = 0;
  int handles = 0;
  int polls = 0;
};

// The system's own calls on a real node, but for what only the driver answers.
struct RealNode final : DeviceCalls {
  int Open(const std::string& node) override { return SystemDeviceCalls().Open(node); }
  int AddressOf(int, UsbAddress& found) override {
    found = address;
    return 0;
  }
  int64_t Read(int fd, uint8_t* buffer, size_t size) override {
    return SystemDeviceCalls().Read(fd, buffer, size);
  }
  int64_t Write(int fd, const uint8_t* data, size_t size) override {
    return SystemDeviceCalls().Write(fd, data, size);
  }
  int Poll(int fd, short events) override { return SystemDeviceCalls().Poll(fd, events); }
  void Close(int fd) override { SystemDeviceCalls().Close(fd); }

  UsbAddress address;
};

class UsbConnectorTest : public UsbLab {
 protected:
  static constexpr int kNewQuietMs = 100;

  std::vector<std::wstring> Found() {
    EXPECT_TRUE(connector.SearchDevices());
    std::vector<std::wstring> paths{L"left over"};
    return connector.GetDevicePaths(paths);
  }
  void AttachTwo() {
    Attach(4, "11f1", "2601");
    Attach(5, "11f1", "2602");
    ASSERT_TRUE(scripted.SearchDevices());
  }
  void OpenScripted(const char* serial = "S1") {
    Attach(0, "11f1", "2601", serial);
    ASSERT_TRUE(scripted.SearchDevices());
    ASSERT_TRUE(scripted.Open(L"0"));
  }
  // Past what every opened node is spared at first.
  void OpenUsedScripted() {
    OpenScripted();
    node.takes = {1};
    ASSERT_EQ(Write(scripted, "x"), 0U);
    node.written.clear();
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

  void SetUp() override {
    UsbLab::SetUp();
    scripted.SetWaiter(waiter);
  }

  UsbConnectorLinux connector;
  ScriptedNode node{attached};
  Nuv::Platform::Waiter waiter{node.clock};
  UsbConnectorLinux scripted{node};
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
  EXPECT_EQ(connector.Identity(0), "/dev/usb/lp10 1-10:1.0 11F1:260A:S1 1/1");
  EXPECT_EQ(connector.Identity(1), "");
}

TEST_F(UsbConnectorTest, OpensByDecimalText) {
  AttachTwo();
  for (const auto& [text, opened] : {std::pair(L"0", "/dev/usb/lp4"),
                                     {L"1", "/dev/usb/lp5"},
                                     {L" +1x", "/dev/usb/lp5"},
                                     {L"abc", "/dev/usb/lp4"},
                                     {L"2", ""},
                                     {L"-1", ""}}) {
    node.opened = {""};
    EXPECT_EQ(scripted.Open(text), *opened != '\0');
    EXPECT_EQ(node.opened.back(), opened);
    scripted.Close();
    scripted.Close();
  }
  EXPECT_EQ(node.closed, 4);
}

TEST_F(UsbConnectorTest, KeepsWhatIsOpenUntilTheNextStands) {
  AttachTwo();
  ASSERT_TRUE(scripted.Open(L"0"));
  const struct {
    const char* what;
    const wchar_t* text;
    int openError;
    bool opens;
    int opened;
    int closed;
  } kRows[] = {{"is open", L"0", EBUSY, true, 0, 0},
               {"no such index", L"99", 0, false, 0, 0},
               {"another program holds it", L"1", EBUSY, false, 1, 0},
               {"another printer", L"1", 0, true, 1, 1}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    node.openError = row.openError;
    node.opened.clear();
    EXPECT_EQ(scripted.Open(row.text), row.opens);
    EXPECT_EQ(static_cast<int>(node.opened.size()), row.opened);
    EXPECT_EQ(node.closed, row.closed);
    EXPECT_EQ(scripted.Look(), LinkState::kAlive);
  }
}

TEST_F(UsbConnectorTest, ReopensOnlyThePrinterThatWasOpen) {
  enum { kStays, kSwapped, kUnplugged };
  const struct {
    const char* what;
    bool closes;  // this side
    int printer;  // unplugged: whereupon this is plugged in
    int number, port;
    const char* product;
    const char* serial;
    bool inJob;  // reopened there
    bool idle;   // and elsewhere, also by its place in the list
  } kRows[] = {
      {"is open", false, kStays, 0, 0, "2601", "A", true, true},
      {"closed", true, kStays, 0, 0, "2601", "A", true, true},
      {"plugged in anew", false, kUnplugged, 0, 0, "2601", "A", false, true},
      {"plugged in anew while closed", true, kUnplugged, 0, 0, "2601", "A", false, true},
      {"another node", false, kUnplugged, 3, 0, "2601", "A", false, true},
      {"another port", false, kUnplugged, 0, 3, "2601", "A", false, false},
      {"another printer on the node", false, kUnplugged, 0, 0, "2601", "B", false, false},
      {"another model on the node", false, kUnplugged, 0, 0, "2602", "A", false, false},
      {"another printer after the look", false, kSwapped, 0, 0, "2601", "A", false, false},
  };
  EXPECT_FALSE(scripted.Reopen(false)) << "none was opened";
  for (const auto& row : kRows) {
    for (const bool inJob : {true, false}) {
      SCOPED_TRACE(std::string(row.what) + (inJob ? " in a job" : ""));
      OpenScripted("A");
      const std::string listed = scripted.Identity(0);
      if (row.closes) scripted.Close();
      if (row.printer != kStays) {
        // The open handle is of no more use, the node is gone.
        Detach(0);
        node.dead = node.last;
        Attach(row.number, "11f1", row.product, row.serial, row.port);
      }
      if (row.printer == kSwapped) ++attached["/dev/usb/lp0"].device;
      EXPECT_EQ(scripted.Reopen(inJob), inJob ? row.inJob : row.idle);
      EXPECT_EQ(scripted.Open(L"0"), row.idle);
      EXPECT_EQ(scripted.Identity(0), listed) << "the list stays as it was";
      scripted.Close();
      EXPECT_EQ(node.handles, 0) << "none is left open";
      Detach(row.number);
    }
  }
}

TEST_F(UsbConnectorTest, TellsWhyANodeCannotBeOpened) {
  OpenScripted();
  scripted.Close();
  for (const auto& [error, why] :
       {std::pair(EACCES, "udev rule"), {EBUSY, "another program"}, {ENOENT, "not attached"}}) {
    node.openError = error;
    EXPECT_THAT(
        ToldBy([&] { EXPECT_FALSE(scripted.Open(L"0")); }),
        ::testing::AllOf(HasSubstr("USB printer /dev/usb/lp0: opening failed: "), HasSubstr(why)));
    EXPECT_EQ(Write(scripted, "x"), kNotOpen);
    EXPECT_EQ(Read(scripted), kNotOpen);
  }
  node.openError = 0;
  EXPECT_TRUE(scripted.Open(L"0"));
}

TEST_F(UsbConnectorTest, TalksOverARealNode) {
  Attach(0, "11f1", "2601");
  ASSERT_THAT(Found(), ElementsAre(L"/dev/usb/lp0\\1"));
  EXPECT_FALSE(connector.Open(L"0")) << "no node of the driver's";
  RealNode node0;
  UsbConnectorLinux real(node0);
  node0.address = attached.at("/dev/usb/lp0");
  ASSERT_TRUE(real.SearchDevices());
  ASSERT_TRUE(real.Open(L"0"));
  EXPECT_EQ(Read(real, 1), kTransferTimeout);
  ASSERT_EQ(write(Far(0), "late\r\n", 6), 6);
  ASSERT_EQ(Write(real, "F101\r\n"), 0U);
  char line[16] = {};
  ASSERT_EQ(read(Far(0), line, sizeof line), 6);
  EXPECT_STREQ(line, "F101\r\n");
  ASSERT_EQ(write(Far(0), "F101 OK\r\n", 9), 9);
  EXPECT_EQ(Read(real), 0U);
  EXPECT_EQ(block, "F101 OK\r\n") << "not the late reply";
  real.Close();
  EXPECT_EQ(Write(real, "x"), kNotOpen);
}

TEST_F(UsbConnectorTest, WritesTheWholeBlockOrFails) {
  const struct {
    const char* what;
    std::deque<int64_t> takes;
    int outputEvents;
    uint32_t status;
    const char* written;
    int64_t sleptMs;
    int opened;  // anew, so that the driver drops what the printer has not taken
  } kRows[] = {
      {"at once", {8}, POLLOUT, 0, "01234567", 0, 0},
      {"in parts", {3, -EAGAIN, 1, 8}, POLLOUT, 0, "01234567", 0, 0},
      {"not taken", {}, 0, kTransferTimeout, "", 500, 1},
      {"taken by the driver only", {8}, 0, kTransferTimeout, "01234567", 500, 1},
      {"partly taken", {3, -EAGAIN}, 0, kTransferTimeout, "012", 500, 1},
      {"interrupted: taken or not", {3, -EINTR, 8}, POLLOUT, EINTR, "012", 0, 1},
      {"error", {3, -EIO}, POLLOUT, EIO, "012", 0, 0},
      {"gone", {-ENODEV}, POLLOUT, ENODEV, "", 0, 0},
      {"gone while it waits", {3, -EAGAIN}, POLLOUT | POLLHUP, ENODEV, "012", 0, 0},
      {"gone before the end", {8}, POLLOUT | POLLHUP, ENODEV, "01234567", 0, 0},
  };
  OpenScripted();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    scripted.Close();
    ASSERT_TRUE(scripted.Open(L"0"));
    node.opened.clear();
    node.takes = row.takes;
    node.outputEvents = row.outputEvents;
    node.written.clear();
    const int64_t before = node.clock.NowMs();
    const std::string told =
        ToldBy([&] { EXPECT_EQ(Write(scripted, "01234567", 500), row.status); });
    EXPECT_EQ(told.find("USB printer /dev/usb/lp0: writing failed: ") != std::string::npos,
              row.status != 0 && row.status != kTransferTimeout);
    EXPECT_EQ(told.find("/dev/usb/lp0 takes no data") != std::string::npos, row.opened != 0);
    EXPECT_EQ(node.written, row.written);
    EXPECT_EQ(node.clock.NowMs() - before, kNewQuietMs + row.sleptMs);
    EXPECT_EQ(static_cast<int>(node.opened.size()), row.opened);
  }
  scripted.Close();
  ASSERT_TRUE(scripted.Open(L"0"));
  EXPECT_EQ(Write(scripted, ""), 0U);
  node.takes = {8192, 8192, 8192};
  EXPECT_EQ(Write(scripted, std::string(20000, 'x')), 0U);

  // Dropped, and then another program has it, or another printer is there.
  node.openError = EBUSY;
  node.outputEvents = 0;
  EXPECT_EQ(Write(scripted, "x"), kNotOpen);
  EXPECT_EQ(scripted.Look(), LinkState::kClosed);
  node.openError = 0;
  ASSERT_TRUE(scripted.Open(L"0"));
  Detach(0);
  Attach(0, "11f1", "2601");
  node.outputEvents = 0;
  EXPECT_EQ(Write(scripted, "x"), kNotOpen);
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
    const int64_t before = node.clock.NowMs();
    const std::string told = ToldBy([&] { EXPECT_EQ(Read(scripted, 500), row.status); });
    EXPECT_EQ(told.find("USB printer /dev/usb/lp0: reading failed: ") != std::string::npos,
              row.status != 0 && row.sleptMs == 0);
    EXPECT_EQ(block, row.block);
    EXPECT_EQ(node.clock.NowMs() - before, row.sleptMs);
    EXPECT_TRUE(node.input.empty());
  }
}

TEST_F(UsbConnectorTest, ThrowsAwayALateReplyWithItsRest) {
  using Inputs = std::deque<ScriptedNode::Input>;
  const struct {
    const char* what;
    bool isNew;  // opened since the last write
    Inputs input;
    int64_t sleptMs;
  } kRows[] = {
      {"nothing", false, {}, 0},
      {"with its rest", false, {{"late "}, {""}, {"reply\r\n", 0, POLLIN, 19}}, 19 + 20},
      {"nothing from before the opening", true, {}, kNewQuietMs},
      {"to the one before", true, {{"la", 0, POLLIN, 99}, {"te\r\n", 0, POLLIN, 99}}, 298},
      {"without an end", true, Inputs(100, {"late ", 0, POLLIN, 50}), 2000},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    OpenUsedScripted();
    if (row.isNew) {
      scripted.Close();
      ASSERT_TRUE(scripted.Open(L"0"));
    }
    const int64_t before = node.clock.NowMs();
    node.input = row.input;
    node.takes = {100};
    ASSERT_EQ(Write(scripted, "F102\r\n"), 0U);
    EXPECT_EQ(node.clock.NowMs() - before, row.sleptMs);
    node.input = {{"mine\r\n"}};
    EXPECT_EQ(Read(scripted), 0U);
    EXPECT_EQ(block, "mine\r\n");
    scripted.Close();
    Detach(0);
  }
  OpenUsedScripted();
  EXPECT_FALSE(scripted.DiscardUntilQuiet(250, 2000));
  node.input = {{"late", 0, POLLIN, 249}};
  EXPECT_TRUE(scripted.DiscardUntilQuiet(250, 2000));
  EXPECT_TRUE(node.input.empty());
}

TEST_F(UsbConnectorTest, IsUsableAfterUnpluggingAndAgainAfterReplugging) {
  OpenUsedScripted();
  const int64_t before = node.clock.NowMs();
  node.polls = 0;
  node.outputEvents = POLLOUT | POLLHUP;
  for (int i = 0; i < 3; ++i) {
    node.input = {{"", i == 0 ? EIO : ENODEV, i == 1 ? POLLIN : POLLIN | POLLHUP}};
    node.takes = {i == 0 ? -EIO : -ENODEV};
    EXPECT_EQ(Read(scripted), kTransferTimeout);
    EXPECT_EQ(Write(scripted, "x"), static_cast<uint32_t>(i == 0 ? EIO : ENODEV));
  }
  EXPECT_EQ(node.clock.NowMs(), before) << "a printer that has gone is not waited for";
  EXPECT_LT(node.polls, 20);
  EXPECT_EQ(scripted.Look(), LinkState::kEnded);
  scripted.Close();
  node.outputEvents = POLLOUT;
  node.takes = {1};
  ASSERT_TRUE(scripted.Open(L"0"));
  EXPECT_EQ(Write(scripted, "x"), 0U);
}

}  // namespace
