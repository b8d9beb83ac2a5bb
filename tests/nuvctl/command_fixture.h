// Runs commands against the fake library and looks at all that came of them.
#ifndef NUVCTL_COMMAND_FIXTURE_H_
#define NUVCTL_COMMAND_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>

#include "error.h"
#include "fake_library.h"

namespace NuvCtl {

using Words = std::vector<std::string>;

constexpr StateAnswer kIdle = {0, NUV_PRINTER_IDLE, 0};
constexpr StateAnswer kPrinting = {0, NUV_PRINTER_PRINTING, 0};
constexpr StateAnswer kReceiving = {0, NUV_PRINTER_RECEIVING, 0};
constexpr StateAnswer kInError = {0, NUV_PRINTER_ERROR, 17};
constexpr StateAnswer kLost = {NUV_FAILED, 0, 0};

// The parts of a text between separators, such as the words of a command line.
inline Words Split(const std::string& text, char separator = ' ') {
  std::istringstream stream(text);
  Words parts;
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

struct CommandTest : testing::Test {
  void SetUp() override { g_fake = FakeLibrary(); }
  void Devices(int count) {
    g_fake.devices.clear();
    for (int i = 0; i < count; ++i) {
      const std::string number = std::to_string(i);
      g_fake.devices.push_back({"10.0.0." + number, "SN" + number, "Model", "Nick"});
    }
  }
  static bool Called(const std::string& call) {
    return std::find(g_fake.calls.begin(), g_fake.calls.end(), call) != g_fake.calls.end();
  }
  // Runs for scripts.
  CommandRun Json(Words arguments) {
    arguments.emplace_back("--json");
    const CommandRun run(arguments, system);
    EXPECT_EQ(run.err, "");
    document = run.Json();
    const auto plain = [](char c) { return c == '\n' || (c >= ' ' && c < '\x7f'); };
    EXPECT_TRUE(std::all_of(run.out.begin(), run.out.end(), plain)) << run.out;
    EXPECT_EQ(document.contains("error"), run.exit != 0);
    return run;
  }
  // Runs twice: for people and, with the same outcome, for scripts.
  CommandRun Both(const Words& arguments) {
    const FakeLibrary script = g_fake;
    const CommandRun text(arguments, system);
    g_fake = script;
    EXPECT_EQ(Json(arguments).exit, text.exit);
    EXPECT_EQ(text.err.empty(), text.exit == 0) << text.err;
    return text;
  }
  // As Both, with the outcome that is expected; `code` is the error's, empty when all is well.
  CommandRun Ends(const Words& arguments, int exit, const std::string& code = "") {
    const CommandRun run = Both(arguments);
    EXPECT_EQ(run.exit, exit) << testing::PrintToString(arguments);
    EXPECT_EQ(ErrorCode(), code) << testing::PrintToString(arguments);
    return run;
  }
  std::string ErrorCode() { return document.value("/error/code"_json_pointer, std::string()); }

  FakeSystem system;
  nlohmann::json document;
};

}  // namespace NuvCtl

#endif  // NUVCTL_COMMAND_FIXTURE_H_
