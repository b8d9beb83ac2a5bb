// The search's part on USB, over a connector that follows a script.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command/reply_views.h"
#include "printer/asking.h"
#include "printer/device.h"
#include "printer/finder.h"
#include "printer/identity.h"
#include "printer/values.h"
#include "tests/connect/scripted_connector.h"
#include "tests/support/manual_clock.h"

namespace {

using namespace Nuv::Printer;

class UsbFindTest : public ::testing::Test {
 protected:
  std::vector<nuv_identity> FindOnUsb() {
    Wishes wishes;
    wishes.network = false;
    CallLimits limits(nullptr, 10000, clock);
    return Find(wishes, limits, limits.End(), clock,
                [this] { return std::make_unique<Nuv::Connect::ScriptedConnector>(port); });
  }

  Nuv::Platform::Clock& clock = Nuv::Platform::SystemClock();
  Nuv::Connect::Port port;
};

TEST_F(UsbFindTest, AsksWhoIsThere) {
  port.printers = {{"U1"}};
  port.onWrite = [this](const std::string& line) {
    port.blocks = {line == "F101\r\n" ? "F101 OK V:1 N:Lab M:Fabrix150 xP S:U1 C:2\n"
                                      : "F197 NG\n"};
  };
  const std::vector<nuv_identity> found = FindOnUsb();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].link, NUV_LINK_USB);
  EXPECT_STREQ(found[0].address.text, "/dev/usb/lp0\\1");
  EXPECT_EQ(found[0].tcp_port, 0);
  EXPECT_EQ(found[0].contact, NUV_RESULT_OK);
  EXPECT_STREQ(found[0].serial.text, "U1");
  EXPECT_STREQ(found[0].name.text, "Lab");
  EXPECT_STREQ(found[0].firmware.text, "1");
  EXPECT_STREQ(found[0].controller.text, "2");
  EXPECT_EQ(found[0].nickname.flags, 0U) << "refused";
  EXPECT_EQ(port.open, -1) << "it is let go";
}

// Who gave up waiting leaves an answer on its way, which is not taken for the next one's.
TEST_F(UsbFindTest, AnAnswerOwedIsWaitedForBeforeTheNextCall) {
  port.printers = {{"U1"}};
  nuv_identity where = NUV_INIT(nuv_identity);
  where.link = NUV_LINK_USB;
  where.address = Text("/dev/usb/lp0\\1");
  const auto device = std::make_shared<Device>(
      where, clock, [this] { return std::make_unique<Nuv::Connect::ScriptedConnector>(port); });
  CallLimits cancelled(nullptr, 0, clock);
  port.onRead = [&] { cancelled.Raise(); };
  EXPECT_THROW(Session(device, cancelled).Run(102), Failure);
  port.onRead = nullptr;
  port.blocks = {"F102 OK S:1\n"};
  port.onWrite = [this](const std::string&) { port.blocks.push_back("F102 OK S:0\n"); };
  CallLimits next(nullptr, 0, clock);
  EXPECT_EQ(Session(device, next).Run(102).Number("S"), 0);
  device->End();
  EXPECT_EQ(port.open, -1);
}

// Every question ends, and the next one to a printer that is sound again is right.
TEST_F(UsbFindTest, WhateverAPrinterSaysTheNextAnswerIsRight) {
  ManualClock time;
  time.waitsPass = true;
  // Idle connections are let go by the system's clock, which must not get there.
  time.Advance(std::chrono::hours(1000000));
  port.printers = {{"U1"}};
  port.readMs = 100;
  const auto device = std::make_shared<Device>(IdentityOf("/dev/usb/lp0\\1"), time, [this] {
    return std::make_unique<Nuv::Connect::ScriptedConnector>(port);
  });
  const std::string block(kReadBytes, 'F');
  const struct {
    const char* what;
    std::deque<std::string> says;  // to every request
    bool ends = false;             // the connection
    uint32_t takes = 0;            // how a write ends
  } rows[] = {{"nothing", {}},
              {"an end", {}, true},
              {"takes nothing", {}, false, kTransferTimeout},
              {"refuses all", {"F102 NG\n"}},
              {"another's answer", {"F999 OK S:0\n"}},
              {"a letter", {"F\n"}},
              {"no end of line", std::deque<std::string>(40, block)},
              {"no text", {std::string(kReadBytes, '\0')}},
              {"empty packets", std::deque<std::string>(100, std::string())},
              {"forty digits", {"F102 OK S:" + std::string(40, '9') + "\n"}},
              {"a negative number", {"F102 OK S:-1\n"}}};
  const std::function<void(Session&)> questions[] = {
      [](Session& session) {
        nuv_state state = NUV_INIT(nuv_state);
        AskState(session, state);
      },
      [](Session& session) {
        nuv_job job = NUV_INIT(nuv_job);
        AskJob(session, job);
      },
      [](Session& session) {
        nuv_resin resin = NUV_INIT(nuv_resin);
        AskResin(session, resin);
      },
      [](Session& session) {
        nuv_identity identity = NUV_INIT(nuv_identity);
        session.AskWho(identity);
      },
      [](Session& session) { session.Exchange("F102\r\n"); }};
  for (const auto& row : rows) {
    for (const auto& ask : questions) {
      SCOPED_TRACE(std::string(row.what) + ", question " + std::to_string(&ask - questions));
      port.onWrite = [&](const std::string&) {
        port.blocks = row.says;
        port.writeStatus = row.takes;
        if (row.ends) port.look = Nuv::Transport::LinkState::kEnded;
      };
      const auto begin = time.SleptMs();
      CallLimits limits(nullptr, 0, time);
      try {
        Session session(device, limits);
        ask(session);
      } catch (const Failure& failure) {
        EXPECT_NE(failure.result, NUV_RESULT_SYSTEM) << failure.message;
      } catch (const Nuv::Command::ReplyError&) {
        // Of which the exports make a result.
      }
      EXPECT_LT(time.SleptMs() - begin, 400000) << "three times 36 s, and of two queries";
      port.onWrite = [this](const std::string&) {
        port.writeStatus = 0;
        port.blocks = {"F102 OK S:3 E:17\n"};
      };
      port.blocks.clear();
      CallLimits sound(nullptr, 0, time);
      nuv_state state = NUV_INIT(nuv_state);
      Session next(device, sound);
      AskState(next, state);
      EXPECT_EQ(state.error_number.value, 17);
    }
  }
  device->End();
}

TEST_F(UsbFindTest, LinksAreSearchedAsTheHostSays) {
  for (const int links :
       {0, 0 + NUV_LINK_NETWORK, 0 + NUV_LINK_USB, NUV_LINK_NETWORK + NUV_LINK_USB}) {
    nuv_search_options options = NUV_INIT(nuv_search_options);
    options.links = links;
    const Wishes wishes = WishesOf(&options);
    EXPECT_EQ(wishes.usb, links != NUV_LINK_NETWORK);
    EXPECT_EQ(wishes.network, links != NUV_LINK_USB);
  }
  EXPECT_TRUE(WishesOf(nullptr).usb && WishesOf(nullptr).network);
}

TEST_F(UsbFindTest, WhoCannotBeOpenedIsAPrinterToo) {
  port.printers = {{"U1", "", false}};
  const std::vector<nuv_identity> found = FindOnUsb();
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].contact, NUV_RESULT_UNREACHABLE);
  port.printers.clear();
  EXPECT_TRUE(FindOnUsb().empty());
}

}  // namespace
