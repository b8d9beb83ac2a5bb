// The life of a job, and the buffer that its lines go through.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "fixture.h"

namespace NuvSim {
namespace {

using std::chrono::milliseconds;

TEST(JobTest, IsKeptByteForByteThenPrintedLayerByLayer) {
  Bench bench([](PrinterConfig& printer) { printer.layerTime = milliseconds(100); });
  const auto client = bench.Connect();
  const std::string lines = std::string("G1 X0\r\n\0\x80 F101\nFx\r\n\r\nabc\r\n", 26);
  client->Send(JobRequest(5 + 7 + 2 + 0 + 3, 3) + lines);
  EXPECT_EQ(client->ReadLine(), "F103 OK");
  ASSERT_TRUE(bench.WaitUntil([&] { return bench.sim->Status().layer == 1; }));
  EXPECT_EQ(bench.sim->JobBytes(), lines);
  EXPECT_EQ(bench.sim->Jobs()[0].lines, 5u);
  EXPECT_EQ(bench.sim->CommandText(), "");

  bench.Pass(milliseconds(299));
  EXPECT_EQ(bench.sim->Status().layer, 3u);
  EXPECT_EQ(bench.sim->Totals().jobsFinished, 0u);
  bench.Pass(milliseconds(1));
  EXPECT_EQ(bench.sim->Status().state, State::kIdle);
  EXPECT_EQ(bench.sim->Totals().jobsFinished, 1u);
}

TEST(JobTest, StaysOpenWhenTheConnectionEndsUntilItIsAbandoned) {
  const std::string plain = JobRequest(20).substr(0, JobRequest(20).size() - 2);
  const std::string board = "F500" + plain.substr(4) + " N<crown.nuv>";
  const struct {
    const char* model;
    std::string opening, sent, received;
  } kRows[] = {
      {"Zafel Superfine", plain, "0123456789\r\nabc", "13"},
      {"BEGO VARSEO XS", plain, "key and a half of record L1", "0"},
      {"Fabrix120 xP", board, "L102", "0"},
      {"Fabrix120 xP", board, "0123456789\r\n", "10"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.model) + " " + row.sent);
    Bench bench(row.model);
    const std::string code = row.opening.substr(0, 4);
    const auto broken = bench.Connect();
    EXPECT_EQ(broken->Ask(row.opening), code + " OK");
    broken->Send(row.sent);
    broken->Close();
    const auto client = bench.Connect();
    EXPECT_EQ(client->Ask("F102"), "F102 OK S:2");
    EXPECT_EQ(client->Ask("F157"), "F157 OK I1 S" + row.received);
    EXPECT_EQ(client->Ask(row.opening), code + " NG S:2");
    EXPECT_EQ(client->Ask("F104 S2"), "F104 OK");
    EXPECT_EQ(client->Ask(row.opening), code + " OK");
  }
}

TEST(JobFolderTest, IsGoneWithTheSimulatorUnlessChosen) {
  std::filesystem::path file;
  {
    Bench bench;
    file = bench.sim->CommandFile();
    EXPECT_TRUE(std::filesystem::exists(file));
  }
  EXPECT_FALSE(std::filesystem::exists(file.parent_path()));

  const auto chosen = std::filesystem::path(testing::TempDir()) / "nuvsim_test_jobs";
  SimulatorConfig config;
  config.printers = {LoopbackPrinter()};
  config.jobFolder = chosen;
  Simulator{config};
  EXPECT_TRUE(std::filesystem::exists(chosen / "printer0-commands.txt"));
  std::filesystem::remove_all(chosen);
}

TEST(BufferTest, LosesWhatDoesNotFit) {
  Bench bench([](PrinterConfig& printer) {
    printer.bufferBytes = 20;
    printer.drainRate = 0;
  });
  const auto client = bench.Connect();
  const std::string exact = std::string(10, 'a') + "\r\n";
  client->Send(JobRequest(100) + exact + "too long\n" + "12345678");
  client->Send(std::string(300000, 'b') + "\r\n");  // longer than the whole buffer, in parts
  client->Send("fits  \r\n");
  EXPECT_EQ(client->ReadLine(), "F103 OK");
  EXPECT_EQ(client->Ask("F157"), "F157 OK I1 S16");
  EXPECT_EQ(client->Ask("F117"), "F117 OK S:0");
  EXPECT_EQ(bench.sim->JobBytes(), exact + "fits  \r\n");
  EXPECT_EQ(bench.sim->Totals().overruns, 2u);
  EXPECT_EQ(bench.sim->Totals().overrunBytes, 9u + 8u + 300002u);
}

}  // namespace
}  // namespace NuvSim
