// Which printer is meant, what is known of those that are, and rows for all of them.

#include "command_fixture.h"
#include "known_printers.h"

namespace NuvCtl {
namespace {

using KnownPrintersTest = CommandTest;

class TargetTest : public CommandTest {
 protected:
  void SetUp() override {
    CommandTest::SetUp();
#ifdef _WIN32
    GTEST_SKIP() << "of several simulated printers on one Windows only one hears a search";
#endif
    Search("127.0.0.1 127.0.0.2 127.0.0.3");
  }
  void Three(const std::string& third = "CC333") {
    std::vector<NuvSim::PrinterConfig> printers = {Config("AA111", "127.0.0.1"),
                                                   Config("BB222", "127.0.0.2"),
                                                   Config(third, "127.0.0.3", "Fabrix150 xP")};
    printers[0].nickname = "by the door";
    printers[1].nickname = "";
    printers[2].nickname = "BB222";
    Start(printers);
  }
};

TEST_F(TargetTest, IsThePrinterThatIsMeant) {
  Three();
  const struct {
    const char* choice;
    const char* serial;  // or the error's code
  } rows[] = {{"--serial AA111", "AA111"},
              {"--serial c333", "CC333"},
              {"--serial X", "which_printer"},
              {"--address 127.0.0.2", "BB222"},
              {"--address 127.0.0.2:6013", "BB222"},
              {"--address localhost", "AA111"},
              {"--address 127.0.0.9 --timeout 400", "no_printer"},
              {"--address no.such.host.invalid", "no_address"},
              {"--index 2", "CC333"},
              {"--index 3", "which_printer"},
              {"--printer AA111", "AA111"},
              {"--printer b222", "BB222"},
              {"--printer BB222", "CC333"},  // a nickname wins
              {"", "which_printer"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.choice);
    Json("info " + std::string(row.choice));
    EXPECT_EQ(exit == kDone ? document["serial"] : document["error"]["code"], row.serial) << out;
  }
  Run(Words{"info", "--printer", "by the door"});
  EXPECT_THAT(out, HasSubstr("AA111"));
}

TEST_F(TargetTest, SaysWhichOneBeforeItIsChanged) {
  Three();
  EXPECT_EQ(Run("nickname new --serial AA111"), kDone);
  EXPECT_THAT(err, HasSubstr("Using the Zafel Superfine \"by the door\" at 127.0.0.1\n"));
  EXPECT_THAT(out, HasSubstr("new (was by the door)"));
  // A place in the list is asked about.
  system.terminal = true;
  system.answer = "n";
  EXPECT_EQ(Run("nickname other --index 0"), kCancelled);
  EXPECT_THAT(system.prompt, HasSubstr("Zafel Superfine \"new\" at 127.0.0.1"));
  EXPECT_EQ(Run("nickname other --index 0 --yes"), kDone);
}

TEST_F(TargetTest, OfOneThatWasSeenTheAddressIsAskedFirst) {
  Three();
  Run("list");
  const auto searches = [&] { return simulator->Totals(1).searches; };
  const uint64_t before = searches();
  Ends("status --serial a111", kDone);
  EXPECT_EQ(searches(), before) << "the others are left alone";
  simulator.reset();
  Search("127.0.0.1");
  Start({Config("AA111", "127.0.0.2"), Config("other", "127.0.0.1")});
  Search("127.0.0.1 127.0.0.2");
  Ends("info --serial AA111", kDone);
  EXPECT_EQ(document["address"], "127.0.0.2") << "it has moved";
  File("{", "nuvctl/seen.json");
  Ends("info --serial AA111", kDone);
}

TEST_F(TargetTest, WithOneSerialNumberTwiceIsNotChosenByIt) {
  Three("AA111");
  Ends("info --serial AA111", kNoPrinter, "which_printer");
  EXPECT_EQ(document["printers"].size(), 2U);
}

TEST_F(TargetTest, OfAKnownNameKeepsItsSerialNumber) {
  Three();
  Ends("printers add lab --address 127.0.0.1", kDone);
  Ends("printers add lab --address 127.0.0.2", kUsage, "usage");
  Ends("info --printer lab", kDone);
  Ends("printers list", kDone);
  EXPECT_EQ(document["printers"][0]["serial"], "AA111") << "learnt at the first contact";
  Ends(
      "printers rename lab L\xC3\xA4"
      "b",
      kDone);
  Ends("printers remove lab", kNoPrinter, "no_printer");
  Ends("list", kDone);
  EXPECT_EQ(document["printers"][0]["known"],
            "L\xC3\xA4"
            "b");
  // Another one is there.
  simulator.reset();
  Start({Config("DD444", "127.0.0.1")});
  Search("127.0.0.1");
  Ends(
      "info --printer L\xC3\xA4"
      "b",
      kNoPrinter, "another_printer");
  Ends("list", kDone);
  EXPECT_EQ(document["printers"][0]["contact"], "not found");
  EXPECT_EQ(document["printers"][1]["serial"], "DD444");
  Ends(
      "printers add --replace L\xC3\xA4"
      "b --address 127.0.0.1",
      kDone);
  Ends(
      "info --printer L\xC3\xA4"
      "b",
      kDone);
  Ends(
      "printers remove L\xC3\xA4"
      "b",
      kDone);
  EXPECT_EQ(document["printers"].size(), 0U);
}

TEST_F(TargetTest, FollowsAKnownPrinterToItsNewAddress) {
  Start({Config("AA111", "127.0.0.2")});
  Search("127.0.0.2");
  ChangeKnown([](KnownPrinters& printers) { printers.push_back({"lab", "127.0.0.1", "AA111"}); });
  Run("info --printer lab --timeout 1000");
  EXPECT_THAT(err, HasSubstr("lab is at 127.0.0.2 now"));
  EXPECT_EQ(LoadKnown().at(0).address, "127.0.0.2");
}

TEST_F(KnownPrintersTest, AreNotGuessedWhenTheFileIsDamaged) {
  const std::filesystem::path known = folder / "nuvctl" / "printers.json";
  ChangeKnown([](KnownPrinters& printers) { printers.push_back({"lab", "127.0.0.1", ""}); });
  for (const char* damaged : {"{\"printers\": [{\"name\": 1}]}", "{}", "[", "{\"printers\": 3}"}) {
    std::ofstream(known) << damaged;
    Ends("info --printer lab", kLocalProblem, "settings_file");
    EXPECT_THAT(out, HasSubstr("printers.json is damaged"));
    Ends("printers add new --serial S", kLocalProblem, "settings_file");
    std::ifstream file(known);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), damaged) << "left as it is";
  }
  std::filesystem::remove_all(folder / "nuvctl");
  File("a file in place of the folder", "nuvctl");
  Ends("printers add new --serial S", kLocalProblem, "settings_file");
}

TEST_F(KnownPrintersTest, AreAllKeptWhenSeveralAreAddedAtOnce) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([i] {
      ChangeKnown([i](KnownPrinters& printers) {
        printers.push_back({"printer " + std::to_string(i), "", "S"});
      });
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(LoadKnown().size(), 8U);
}

TEST_F(TargetTest, AreAskedAllAtOnceAndAFailureIsARow) {
  Three();
  simulator->InjectFault(1, NuvSim::ParseFault("silent,code=101,count=-1"));
  simulator->InjectFault(2, NuvSim::ParseFault("refuse,code=102,count=-1"));
  ChangeKnown([](KnownPrinters& printers) {
    printers.push_back({"away", "127.0.0.9", "EE555"});
    printers.push_back({"lab", "", "CC333"});
  });
  EXPECT_EQ(Run("list --timeout 800"), kDone);
  EXPECT_THAT(out, HasSubstr("127.0.0.2  -       does not answer"));
  EXPECT_EQ(Run("status --all --timeout 800"), kSomeFailed);
  EXPECT_THAT(out, HasSubstr("127.0.0.2  does not answer"));
  Json("status --all --timeout 800");
  ASSERT_EQ(document.size(), 4U);
  EXPECT_EQ(document[0]["contact"], "not found");
  EXPECT_EQ(document[1]["known"], "lab");
  EXPECT_EQ(document[1]["error"]["code"], "refused");
  EXPECT_EQ(document[2]["state"], "idle");
  EXPECT_EQ(document[3]["error"]["code"], "no_answer");
  simulator->ClearFaults(1);
  for (const char* line : {"info --all", "resin --all", "versions --all"}) {
    Json(line);
    EXPECT_FALSE(document[2].contains("error")) << out;
  }
}

TEST_F(TargetTest, IsSaidToBeWaitedFor) {
  Three();
  simulator->InjectFault(0, NuvSim::ParseFault("silent,code=102"));
  EXPECT_EQ(Run("status --address 127.0.0.1 --timeout 2600"), kConnectionProblem);
  EXPECT_THAT(err, HasSubstr("waiting for 127.0.0.1; another program may be using it\n"));
  // Ctrl-C.
  simulator->InjectFault(0, NuvSim::ParseFault("silent,code=102"));
  system.interrupts = [&] { return WasAsked("F102"); };
  EXPECT_EQ(Run("status --address 127.0.0.1"), kCancelled);
}

TEST_F(TargetTest, ThatIsNotFoundIsLookedFor) {
  Three();
  Ends("doctor", kDone);
  EXPECT_EQ(Run("doctor"), kDone);
  EXPECT_THAT(out, HasSubstr("3 printers found\n"));
  EXPECT_THAT(out, HasSubstr("broadcast 10.77."));
  simulator.reset();
  EXPECT_EQ(Run("doctor --timeout 300"), kLocalProblem);
  EXPECT_THAT(out, HasSubstr("problem  printers: 0 printers found\n         Check that one is on"));
  EXPECT_THAT(err, HasSubstr("1 problem was found."));
}

TEST_F(TargetTest, WithoutAnyPrinterNothingIsFound) {
  Search("127.0.0.1");
  for (const char* line : {"list", "status", "status --all", "watch --all"}) {
    Ends(std::string(line) + " --timeout 300", kNoPrinter, "no_printer");
  }
  Ends("list --usb", kNoPrinter, "no_printer");
}

}  // namespace
}  // namespace NuvCtl
