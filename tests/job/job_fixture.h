// A job between a scripted printer and a print file in memory, on a clock that costs no time.
#ifndef NUV_TESTS_JOB_FIXTURE_H_
#define NUV_TESTS_JOB_FIXTURE_H_

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "job/gcode_job.h"
#include "job/print_job.h"
#include "nuvconnect/ResultCodes.h"
#include "tests/support/manual_clock.h"
#include "tests/support/scripted_channel.h"
#include "tests/support/told.h"

namespace Nuv::Connect {

using Strings = std::vector<std::string>;

inline constexpr char kZafelId[] = "3DPSNKG23WTW00001";

// A payload behind the header that tells its length.
inline std::string Frame(const std::string& payload) {
  std::string header = "L105";
  for (int shift = 0; shift < 32; shift += 8) {
    header += static_cast<char>((payload.size() >> shift) & 0xFFU);
  }
  return header + payload;
}

// A print file held in memory.
class FakePrintFiles final : public IPrintFileLibrary {
 public:
  bool LoadLibrary() override { return Told(available); }
  bool Load(const std::string&) override { return Told(accepts); }
  void Close() override { ++closes; }
  std::string LastError() const override { return "no"; }
  std::string GetMachineID() override { return machineId; }
  std::string GetProjectID() override { return "P7"; }
  std::string GetMaterialID() override { return "Resin A"; }
  std::string GetFileArguments() override { return arguments; }
  int GetModelDataSize() override {
    size_t total = 0;
    for (const std::string& line : lines) total += line.size();
    return static_cast<int>(total);
  }
  bool ReadLayer(int index, std::vector<uint8_t>& line) override {
    if (static_cast<size_t>(index) >= lines.size() || index == unreadable) return Told(false);
    const std::string& text = lines[static_cast<size_t>(index)];
    line.assign(text.begin(), text.end());
    return true;
  }

  bool GetAESkey(std::vector<uint8_t>& bytes) override { return Part(key, bytes); }
  bool ReadPreImg(std::vector<uint8_t>& bytes) override { return Part(preview, bytes); }
  bool ReadL101(std::vector<uint8_t>& bytes) override { return Part(l101, bytes); }
  bool ReadL102(std::vector<uint8_t>& bytes) override { return Part(l102, bytes); }
  bool ReadL103(std::vector<uint8_t>& bytes) override { return Part(l103, bytes); }

  bool available = true;
  bool accepts = true;
  std::string machineId = kZafelId;
  std::string arguments =
      "layers=12\nlayer_thickness_mm=0.05\nprint_minutes=90\nresin_ml=7.5\nexposure_s=1.5\n"
      "bottom_exposure_s=8\nlift_mm=6\nlift_mm_s=2.5\nretract_mm_s=3\n"
      "laser_power_percent=80\nother=x\nbroken\n";
  Strings lines;
  int unreadable = -1;
  std::string key, preview, l101, l102, l103;
  const std::string* damaged = nullptr;  // the part of these that cannot be read
  int closes = 0;

 private:
  // The real one tells why.
  static bool Told(bool ok) {
    if (!ok) Platform::Diagnostic("print file: no");
    return ok;
  }
  bool Part(const std::string& part, std::vector<uint8_t>& bytes) const {
    bytes.assign(part.begin(), part.end());
    return Told(&part != damaged);
  }
};

// What the host was told, and when it cancels. The callbacks are plain functions, hence static.
struct Host {
  int starts = 0;
  std::vector<std::pair<int, int>> updates;
  std::vector<float> percents;
  std::vector<std::pair<int, int>> errors;
  int asked = 0;
  int cancelFrom = -1;  // the question from which on the answer is yes
};
inline Host g_host;

class JobTest : public ::testing::Test {
 public:
  void SetUp() override {
    g_host = Host();
    callbacks.errorCode = [](int result, int code) { g_host.errors.emplace_back(result, code); };
    callbacks.sendStart = [] { ++g_host.starts; };
    callbacks.sendUpdate = [](int total, int sent) { g_host.updates.emplace_back(total, sent); };
    callbacks.sendCancel = [] {
      return g_host.cancelFrom >= 0 && g_host.asked++ >= g_host.cancelFrom;
    };
    path = std::filesystem::path(::testing::TempDir()) / "job.txt";
    WriteFile("");
    printer.Always("F102", "F102 OK S:0");
    printer.Always("F103", "F103 OK");
    printer.Always("F104", "F104 OK");
    HasFreeBuffer(1000000);
  }
  void TearDown() override {
    EXPECT_TRUE(state.linkFree) << "the status thread would stay off the link for ever";
    EXPECT_FALSE(state.jobRunning);
  }

  void HasFreeBuffer(int bytes) { printer.Always("F117", "F117 OK S:" + std::to_string(bytes)); }
  void WriteFile(const std::string& text) const { std::ofstream(path, std::ios::binary) << text; }
  // A new printer, print file and host in place of those of the last job.
  void StartAnew() {
    printer = ScriptedChannel();
    files = FakePrintFiles();
    SetUp();
  }
  int Send() { return SendPrintFile(Context(), path.wstring(), Progress); }
  int SendCommands() { return SendGCodeFile(Context(), path.wstring(), Progress); }
  // The same, and that a job which fails says why.
  int ToldResultOf(int (JobTest::*send)()) {
    int result = NUV_OK;
    told = ToldBy([&] { result = (this->*send)(); });
    EXPECT_EQ(told.empty(), result == NUV_OK);
    if (result == NUV_WRITE_FAILED) {
      EXPECT_THAT(told, ::testing::AnyOf(::testing::HasSubstr("not written"),
                                         ::testing::HasSubstr("link ended")));
    }
    return result;
  }
  JobContext Context() { return {printer, clock, files, callbacks, state}; }

  ScriptedChannel printer;
  ManualClock clock;
  FakePrintFiles files;
  HostCallbacks callbacks;
  JobState state;
  std::filesystem::path path;
  std::string told;

 private:
  static void Progress(float percent) { g_host.percents.push_back(percent); }
};

// What goes wrong in a row of a table.
using Fault = std::function<void(JobTest&)>;
inline Fault Silent(const std::string& code) {
  return [=](JobTest& t) { t.printer.Always(code, ""); };
}
inline Fault Refused(const std::string& code) {
  return [=](JobTest& t) { t.printer.Always(code, code + " NG S:1"); };
}
inline Fault FreeBuffer(int bytes) {
  return [=](JobTest& t) { t.HasFreeBuffer(bytes); };
}
inline Fault WritesFailAfter(int blocks) {
  return [=](JobTest& t) { t.printer.writesUntilFailure = blocks; };
}
inline Fault LostWithFreeBuffer(int bytes) {
  return [=](JobTest& t) {
    t.HasFreeBuffer(bytes);
    t.printer.opens = false;
  };
}
inline Fault CancelledFrom(int question) {
  return [=](JobTest&) { g_host.cancelFrom = question; };
}
inline Fault Argument(const std::string& line) {
  return [=](JobTest& t) { t.files.arguments = line + "\n"; };
}
using Part = std::string FakePrintFiles::*;
inline Fault Damaged(Part part) {
  return [=](JobTest& t) { t.files.damaged = &(t.files.*part); };
}

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_JOB_FIXTURE_H_
