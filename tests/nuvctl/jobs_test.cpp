#include "command_fixture.h"

namespace NuvCtl {
namespace {

class JobsTest : public CommandTest {
 protected:
  bool IsIdle() {
    return Becomes([&] { return simulator->Status().state == NuvSim::State::kIdle; });
  }
};

TEST_F(JobsTest, SendsAndSaysWhatThePrinterTook) {
  One();
  const std::string file = PrintFile();
  EXPECT_EQ(Run(Words{"send", file}), kDone) << err;
  EXPECT_THAT(out, HasSubstr("15 B in 0:00. The printer took it as job 1.\n"));
  EXPECT_THAT(err,
              HasSubstr("Using the Zafel Superfine \"Lab one\" at 127.0.0.1\nSending " + file));
  EXPECT_THAT(err, HasSubstr("100%  15 B of 15 B\n"));
  EXPECT_TRUE(IsIdle());
  EXPECT_EQ(simulator->JobBytes(), "G1 X1\r\nG1 X1\r\nG1 X1\r\n");
  Ends({"send", file}, kDone);
  EXPECT_EQ(document["job_index"], 2);
  EXPECT_EQ(document["bytes"], 15);
  EXPECT_TRUE(IsIdle());
  system.terminal = true;
  EXPECT_EQ(Run(Words{"gcode", File("G28\nG1 X1\n")}), kDone) << err;
  EXPECT_THAT(err, HasSubstr("[####"));
  EXPECT_THAT(out, HasSubstr("The printer does not confirm command files.\n"));
}

TEST_F(JobsTest, SendsNothingThatIsNotFitUnlessForced) {
  One("Fabrix150 xP");
  const std::string file = PrintFile();
  Run(Words{"send", file});
  EXPECT_THAT(err,
              HasSubstr("the file is for Zafel Superfine printers, this one is a Fabrix150 xP"));
  Ends({"send", file}, kNotFit, "not_fit");
  Ends({"send", "--dry-run", file}, kNotFit, "not_fit");
  EXPECT_EQ(simulator->Totals().jobsAccepted, 0U);
  One();
  Ends({"send", "--dry-run", file}, kDone);
  EXPECT_EQ(document["resin_left_ml"], 350);
  Ends({"send", PrintFile("3DPSNKG53WTW00001", 3, "351")}, kNotFit, "not_fit");
  Ends({"send", "--force", file}, kDone);
  EXPECT_TRUE(IsIdle());
  simulator->SetError(0, 17);
  Ends({"send", "--force", file}, kPrinterFailed, "busy");
  EXPECT_EQ(simulator->Totals().jobsAccepted, 1U);
}

TEST_F(JobsTest, RefusesABadFileBeforeAnySearch) {
  const std::string file = PrintFile();
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 1);
  Ends({"send", file}, kFileProblem, "file_damaged");
  for (const std::string& name : {file + ".missing", folder.u8string(), std::string("Z\xE4hne")}) {
    Ends({"send", name}, kFileProblem, "file_not_readable");
  }
  Ends({"send", PrintFile("3DPSNKGZ3WTW00001")}, kFileProblem, "file_not_readable");
}

TEST_F(JobsTest, CtrlCCancelsAndIsNeverASuccess) {
  One();
  const std::string file = PrintFile("3DPSNKG53WTW00001", 30);
  system.interrupts = [&] { return !simulator->Jobs().empty() && simulator->Jobs()[0].lines > 1; };
  Ends({"send", file}, kCancelled, "cancelled");
  EXPECT_EQ(document["result"], "cancelled");
  EXPECT_LT(document["bytes"], 150);
  EXPECT_TRUE(IsIdle());
  EXPECT_EQ(simulator->Totals().jobsAbandoned, 1U);
}

TEST_F(JobsTest, TellsWhatALostConnectionLeavesAndTriesAgain) {
  One("Fabrix120 xP");
  const std::string file = PrintFile("3DPSNKG43WTW00001");
  const std::string cut = "drop-after,code=503,bytes=10";
  Commits(cut);
  Ends({"send", file}, kConnectionProblem, "connection_lost");
  EXPECT_THAT(out, HasSubstr("has 8 of 15 bytes"));
  EXPECT_THAT(out, HasSubstr("nuvctl cancel"));
  Ends({"send", file}, kPrinterFailed, "busy");
  Ends("cancel --yes", kDone);
  EXPECT_EQ(document["cancelled"], true);
  Ends("cancel --yes", kDone);
  EXPECT_EQ(document["cancelled"], false);
  Commits(cut);
  Ends({"send", "--retry", "1", file}, kDone);
  EXPECT_EQ(simulator->JobBytes(), "G1 X1\r\nG1 X1\r\nG1 X1\r\n");
  EXPECT_TRUE(IsIdle());
  // All came before the connection was lost.
  Commits("drop-after,code=503,bytes=21");
  const uint64_t before = simulator->Totals().jobsAccepted;
  Ends({"send", "--retry", "3", file}, kDone);
  EXPECT_EQ(simulator->Totals().jobsAccepted, before + 1);
  EXPECT_TRUE(IsIdle());
  Commits("refuse,code=500");
  Ends({"send", file}, kPrinterFailed, "job_refused");
}

TEST_F(JobsTest, AsksBeforeAJobIsCancelled) {
  auto config = Config("SN1", "127.0.0.1");
  config.layerTime = std::chrono::minutes(1);
  Start({config});
  EXPECT_EQ(Run(Words{"send", PrintFile()}), kDone);
  EXPECT_TRUE(Becomes([&] { return simulator->Status().state == NuvSim::State::kPrinting; }));
  system.terminal = true;
  system.answer = "n";
  Ends("cancel", kCancelled, "cancelled");
  EXPECT_THAT(system.prompt, HasSubstr("printing"));
  system.answer = "y";
  EXPECT_EQ(Run("cancel"), kDone);
  EXPECT_EQ(simulator->Totals().jobsAbandoned, 1U);
}

TEST_F(JobsTest, SeveralPrintersGetAFileAtTheSameTime) {
#ifdef _WIN32
  GTEST_SKIP() << "of several simulated printers on one Windows only one hears a search";
#endif
  Search("127.0.0.1 127.0.0.2");
  Start({Config("SN1", "127.0.0.1"), Config("SN2", "127.0.0.2")});
  const auto send = [&](const std::string& file, const std::string& option) {
    return Words{"send", option, "--printer", "SN1", "--printer", "SN2", file};
  };
  const auto both = [&](auto holds) { return Becomes([&] { return holds(0) && holds(1); }); };
  const auto idle = [&](size_t i) { return simulator->Status(i).state == NuvSim::State::kIdle; };
  EXPECT_EQ(Json(send(PrintFile(), "--dry-run")), kDone) << err;
  EXPECT_EQ(document[1]["result"], "fit");
  system.terminal = true;
  EXPECT_EQ(Run(send(PrintFile(), "--force")), kDone) << err;
  EXPECT_THAT(out, HasSubstr("SN2: sent, 15 B in 0:0"));
  EXPECT_THAT(err, HasSubstr("SN1  [####"));
  EXPECT_TRUE(both(idle));
  simulator->SetError(0, 17);
  EXPECT_EQ(Json(send(PrintFile(), "--force")), kSomeFailed);
  EXPECT_EQ(document[0]["error"]["code"], "busy") << out;
  EXPECT_EQ(document[1]["job_index"], 2);
  simulator->SetIdle(0);
  EXPECT_TRUE(both(idle));
  // Ctrl-C reaches all of them.
  system.interrupts = [&] {
    return simulator->Status(0).state == NuvSim::State::kReceiving &&
           simulator->Status(1).state == NuvSim::State::kReceiving;
  };
  EXPECT_EQ(Run(send(PrintFile("3DPSNKG53WTW00001", 50), "--json")), kCancelled);
  EXPECT_TRUE(both(idle));
  EXPECT_EQ(simulator->Totals(0).jobsAbandoned, 1U) << out;
  EXPECT_EQ(simulator->Totals(1).jobsAbandoned, 1U) << out;
  Ends({"send", "--printer", "a", "--printer", "a", PrintFile()}, kUsage, "usage");
}

class WatchTest : public JobsTest {
 protected:
  // A printer that prints three layers, as slowly as that.
  void Prints(std::chrono::milliseconds layer) {
    auto config = Config("SN1", "127.0.0.1");
    config.nickname = "Lab; one";
    config.layerTime = layer;
    Start({config});
    EXPECT_EQ(Run(Words{"send", PrintFile()}), kDone) << err;
    EXPECT_TRUE(Becomes([&] { return simulator->Status().state == NuvSim::State::kPrinting; }));
  }
};

TEST_F(WatchTest, FollowsAPrintAndTellsHowItEnded) {
  Prints(std::chrono::milliseconds(500));
  EXPECT_EQ(Run(Words{"watch", "--json", "--then", "true"}), kDone) << err;
  EXPECT_THAT(system.environment, HasSubstr("NUVCTL_OUTCOME=finished NUVCTL_PRINTER="));
  const Words lines = Split(out, '\n');
  EXPECT_EQ(nlohmann::json::parse(lines.front())["layers"], 3);
  EXPECT_EQ(nlohmann::json::parse(lines.back())["ended"], "finished");
  EXPECT_EQ(Run("watch"), kDone);
  EXPECT_EQ(out, "idle\n");
}

TEST_F(WatchTest, IsNoSuccessWhenThePrintWasCancelledOrThePrinterIsInError) {
  Prints(std::chrono::minutes(1));
  std::thread person([&] {
    Becomes([&] { return WasAsked("F107"); });
    simulator->SetIdle(0);
  });
  EXPECT_EQ(Run("watch --printer SN1"), kPrinterFailed);
  person.join();
  EXPECT_THAT(out, HasSubstr("\ncancelled at 0 %\n"));
  simulator->SetError(0, 17);
  Run("watch");
  EXPECT_EQ(out, "error 17\n");
  EXPECT_EQ(exit, kPrinterFailed);
}

TEST_F(WatchTest, GoesOnWithoutAnAnswerUntilItGivesUp) {
  Prints(std::chrono::milliseconds(1500));
  Commits("silent,code=102,skip=1,count=1");
  EXPECT_EQ(Run("watch"), kDone) << err;
  EXPECT_THAT(out, HasSubstr("\nno answer since "));
  EXPECT_THAT(out, HasSubstr("\nfinished\n"));
  simulator->Unplug(0);
  EXPECT_EQ(Run("watch --give-up 0 --address 127.0.0.1 --timeout 300"), kNoPrinter);
  simulator->Replug(0);
  Commits("silent,code=102,count=-1");
  EXPECT_EQ(Run("watch --give-up 0"), kConnectionProblem) << out;
  EXPECT_THAT(out, HasSubstr("no answer\n"));
}

TEST_F(WatchTest, OfAllHasARowEach) {
#ifdef _WIN32
  GTEST_SKIP() << "of several simulated printers on one Windows only one hears a search";
#endif
  Search("127.0.0.1 127.0.0.2");
  auto slow = Config("SLOW", "127.0.0.2");
  slow.layerTime = std::chrono::milliseconds(700);
  Start({Config("IDLE", "127.0.0.1"), slow});
  EXPECT_EQ(Run(Words{"send", "--serial", "SLOW", PrintFile()}), kDone);
  system.terminal = true;
  EXPECT_EQ(Run("watch --all"), kDone) << err;
  EXPECT_THAT(out, HasSubstr("Simulated printer  idle"));
  EXPECT_THAT(out, HasSubstr("finished"));
  EXPECT_THAT(out, HasSubstr("\x1b[1A")) << "rows are written over";
}

}  // namespace
}  // namespace NuvCtl
