// Runs commands against simulated printers and looks at all that came of them.
#ifndef NUVCTL_COMMAND_FIXTURE_H_
#define NUVCTL_COMMAND_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "command_line.h"
#include "error.h"
#include "nuvfile/print_file_writer.h"
#include "tests/printer/printer_lab.h"
#include "tests/support/environment.h"

namespace NuvCtl {

using ::testing::HasSubstr;
using ::testing::Not;
using Words = std::vector<std::string>;

// The parts of a text between separators, such as the words of a command line.
inline Words Split(const std::string& text, char separator = ' ') {
  std::istringstream stream(text);
  Words parts;
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

struct FakeSystem final : System {
  int64_t NowMs() override {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  }
  void SleepMs(int64_t milliseconds) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  bool ErrorIsTerminal() override { return terminal; }
  bool OutputIsTerminal() override { return terminal; }
  bool InputIsTerminal() override { return terminal; }
  int ErrorWidth() override { return width; }
  int OutputWidth() override { return width; }
  std::optional<std::string> Ask(const std::string& question) override {
    prompt += question;
    return answer;
  }
  std::optional<std::string> ReadSecret(const std::string& text) override {
    prompt += text;
    return secret;
  }
  void WatchInterrupts(bool watch) override { watched = watch; }
  bool Interrupted() override { return watched && interrupts && interrupts(); }
  void WatchInput() override {}
  std::string Program() override { return NUVCTL_PROGRAM; }
  void SetEnvironment(const char* name, const char* value) override {
    environment += std::string(name) + '=' + value + ' ';
  }

  bool terminal = false, watched = false;
  int width = 80;
  std::string environment, prompt;
  std::optional<std::string> secret, answer;
  std::function<bool()> interrupts;  // whether Ctrl-C has been pressed
};

class CommandTest : public PrinterLab {
 protected:
  void SetUp() override {
    PrinterLab::SetUp();
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "APPDATA", "LOCALAPPDATA"}) {
      SetEnvironment(name, folder.string().c_str());
    }
    SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
    Search("127.0.0.1");
  }
  // Where searches ask, which then end as soon as all have answered.
  static void Search(const std::string& addresses) {
    SetEnvironment("NUVCONNECT_SEARCH", addresses.c_str());
  }
  void One(const std::string& model = "Zafel Superfine") {
    auto config = Config("SN1", "127.0.0.1", model);
    config.nickname = "Lab one";
    config.layerTime = std::chrono::milliseconds(1);
    Start({config});
  }

  // Runs for people.
  int Run(const Words& arguments) {
    std::ostringstream outStream, errStream;
    exit = RunCommandLine(arguments, outStream, errStream, system);
    out = outStream.str();
    err = errStream.str();
    EXPECT_FALSE(system.watched);
    return exit;
  }
  int Run(const std::string& line) { return Run(Split(line)); }
  // Runs for scripts: one document, in ASCII, on standard output alone.
  int Json(Words arguments) {
    arguments.emplace_back("--json");
    Run(arguments);
    document = nlohmann::json::parse(out, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << out;
    const auto plain = [](char c) { return c == '\n' || (c >= ' ' && c < '\x7f'); };
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), plain)) << out;
    EXPECT_EQ(document.is_object() && document.contains("error"), exit != 0 && exit != kSomeFailed);
    return exit;
  }
  int Json(const std::string& line) { return Json(Split(line)); }
  // Runs for scripts, and expects this exit code and word; none when all is well.
  void Ends(const Words& arguments, int wanted, const std::string& code = "") {
    EXPECT_EQ(Json(arguments), wanted) << ::testing::PrintToString(arguments) << out << err;
    EXPECT_EQ(document.value("/error/code"_json_pointer, std::string()), code) << out;
  }
  void Ends(const std::string& line, int wanted, const std::string& code = "") {
    Ends(Split(line), wanted, code);
  }

  std::string PrintFile(const std::string& machineId = "3DPSNKG53WTW00001", int lines = 3,
                        const std::string& resinMl = "5") {
    NuvFile::PrintFileContents contents;
    contents.machineId = machineId;
    contents.arguments = {{"resin_ml", resinMl}};
    const std::vector<std::string> data(static_cast<size_t>(lines), "G1 X1");
    const auto path = folder / "crown.nuv";
    EXPECT_TRUE(NuvFile::WritePrintFile(path.string(), contents, NuvFile::LinesOf(data)).Ok());
    return path.u8string();
  }
  std::string File(const std::string& bytes, const std::string& name = "file") {
    std::ofstream(folder / name, std::ios::binary) << bytes;
    return (folder / name).u8string();
  }
  bool WasAsked(const std::string& request) const {
    const auto requests = simulator->Requests();
    return std::find(requests.begin(), requests.end(), request) != requests.end();
  }

  // Of each test, since they may run at the same time.
  const std::filesystem::path folder =
      std::filesystem::path(::testing::TempDir()) /
      (std::string("nuvctl_") + ::testing::UnitTest::GetInstance()->current_test_info()->name());
  FakeSystem system;
  int exit = 0;
  std::string out, err;
  nlohmann::json document;
};

}  // namespace NuvCtl

#endif  // NUVCTL_COMMAND_FIXTURE_H_
