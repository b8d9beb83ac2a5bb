// The control language, and its way over a socket.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "fixture.h"
#include "nuvsim/control/language.h"
#include "nuvsim/control/server.h"

namespace NuvSim {
namespace {

using nlohmann::json;

json Control(Bench& bench, const std::string& request) {
  return json::parse(ControlSimulator(*bench.sim, request).line);
}

TEST(ControlTest, StatusTellsWhatHappened) {
  Bench bench;
  const auto client = bench.Connect();
  client->Send(JobRequest(20) + "0123456789\r\n");
  EXPECT_EQ(client->Ask("F157"), "F103 OK");
  EXPECT_EQ(client->ReadLine(), "F157 OK I1 S10");
  const json printer = Control(bench, R"({"do": "status"})").at("printers").at(0);
  EXPECT_EQ(printer.at("port"), bench.sim->TcpPort());
  EXPECT_EQ(printer.at("state"), 2);
  EXPECT_EQ(printer.at("jobs").at(0).at("receivedBytes"), 10);
  EXPECT_EQ(printer.at("totals").at("requests"), 2);
}

TEST(ControlTest, RequestsThatAreNoTextDoNotBreakTheAnswer) {
  Bench bench;
  EXPECT_EQ(bench.Connect()->Ask("F1 \xff\xfe"), "F1 NG");
  EXPECT_THAT(Control(bench, R"({"do": "requests"})").at("requests").at(0).get<std::string>(),
              testing::StartsWith("F1 "));
}

TEST(ControlTest, EffectsShowOnTheWire) {
  const struct {
    const char *control, *request, *reply;
  } kSteps[] = {
      {R"({"do": "state", "to": "idle"})", "F102", "F102 OK S:0"},
      {R"({"do": "state", "to": "error", "number": 9})", "F102", "F102 OK S:3 E:9"},
      {R"({"do": "state", "to": "no-error"})", "F102", "F102 OK S:0"},
      {R"({"do": "state", "to": "resin-refused", "number": 4})", "F105", "F105 NG S:4"},
      {R"({"do": "state", "to": "resin-accepted"})", "F105",
       "F105 OK S:1 R:350 C:1001 V:500 Q:L0001"},
      {R"({"do": "state", "to": "tag-unregistered"})", "F219", "F219 NG"},
      {R"({"do": "state", "to": "tag-registered"})", "F219", "F219 OK"},
      {R"({"do": "state", "to": "repositioning"})", "F515", "F515 OK R:1"},
      {R"({"do": "state", "to": "in-position"})", "F515", "F515 OK R:0"},
      {R"({"do": "fault", "printer": 0, "fault": {"kind": "refuse", "count": -1}})", "F197",
       "F197 NG N:Simulated printer"},
      {R"({"do": "clear"})", "F197", "F197 OK N:Simulated printer"},
  };
  Bench bench("Fabrix120 xP");
  const auto client = bench.Connect();
  client->Send(JobRequest(20));
  ASSERT_EQ(client->ReadLine(), "F103 OK");
  for (const auto& step : kSteps) {
    EXPECT_EQ(Control(bench, step.control), (json{{"ok", true}}));
    EXPECT_EQ(client->Ask(step.request), step.reply) << step.control;
  }
}

TEST(ControlTest, WhatIsNoControlIsAnsweredWithAnError) {
  Bench bench;
  for (const char* request :
       {"", "\xff", "7", R"({"do": "dance"})", R"({"do": "quit", "now": true})",
        R"({"do": "status", "printer": 1})", R"({"do": "status", "printer": -1})",
        R"({"do": "fault"})", R"({"do": "fault", "fault": {"kind": "zap"}})", R"({"do": "state"})",
        R"({"do": "state", "to": "error"})", R"({"do": "state", "to": "idle", "number": 1})",
        R"({"do": "state", "to": "resin-refused", "number": "x"})"}) {
    const ControlAnswer answer = ControlSimulator(*bench.sim, request);
    EXPECT_FALSE(json::parse(answer.line).at("error").get<std::string>().empty()) << request;
    EXPECT_FALSE(answer.quits) << request;
  }
  EXPECT_EQ(bench.sim->Status().armedFaults, 0u);
}

TEST(ControlServerTest, AnswersLineByLineUntilToldToQuit) {
  Bench bench;
  asio::io_context io;
  bool hasQuit = false;
  ControlServer server(io, 0, *bench.sim, [&] {
    hasQuit = true;
    io.stop();
  });
  std::thread thread([&io] { io.run(); });
  RawClient client(server.Port());
  client.Send("nonsense\n{\"do\": \"unplug\"}\r\n{\"do\": \"replug\"}\n{\"do\": \"quit\"}\n");
  const std::string answers = client.ReadToEnd();
  thread.join();
  EXPECT_THAT(answers, testing::StartsWith("{\"error\""));
  EXPECT_THAT(answers, testing::EndsWith("}\n{\"ok\":true}\n{\"ok\":true}\n"
                                         "{\"ok\":true,\"quit\":true}\n (closed)"));
  EXPECT_TRUE(hasQuit);
  EXPECT_EQ(bench.Connect()->Ask("F102"), "F102 OK S:0");
}

}  // namespace
}  // namespace NuvSim
