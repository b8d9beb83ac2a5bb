// Runs commands against the fake library and looks at all that came of them.
#ifndef NUVCTL_COMMAND_FIXTURE_H_
#define NUVCTL_COMMAND_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>

#include "error.h"
#include "fake_library.h"

namespace nuvctl {

struct CommandTest : testing::Test {
  void SetUp() override { fake = FakeLibrary(); }
  void Devices(int count) {
    fake.devices.clear();
    for (int i = 0; i < count; ++i) {
      const std::string number = std::to_string(i);
      fake.devices.push_back({"10.0.0." + number, "SN" + number, "Model", "Nick"});
    }
  }
  // Runs twice: for people and, with the same outcome, for scripts.
  CommandRun Both(std::vector<std::string> arguments) {
    const FakeLibrary script = fake;
    const CommandRun text(arguments, system);
    fake = script;
    arguments.emplace_back("--json");
    const CommandRun json(arguments, system);
    EXPECT_EQ(json.exit, text.exit);
    EXPECT_EQ(json.err, "");
    document = json.Json();
    const auto plain = [](char c) { return c == '\n' || (c >= ' ' && c < '\x7f'); };
    EXPECT_TRUE(std::all_of(json.out.begin(), json.out.end(), plain)) << json.out;
    EXPECT_EQ(document.contains("error"), text.exit != 0);
    EXPECT_EQ(text.err.empty(), text.exit == 0) << text.err;
    return text;
  }
  std::string ErrorCode() { return document["error"]["code"]; }

  FakeSystem system;
  nlohmann::json document;
};

}  // namespace nuvctl

#endif  // NUVCTL_COMMAND_FIXTURE_H_
