#include "platform/diagnostics.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/told.h"

namespace Nuv::Platform {

std::string g_debugOutput;

// In place of the system's.
void WriteDebugOutput(const std::string& line) { g_debugOutput += line; }

namespace {

TEST(DiagnosticTest, IsOnePrefixedLineThatTextCannotBreak) {
  const std::string text = ToldBy([] {
    Diagnostic("reply: %s %d", "F102 OK\r\n[NKG]forged", 7);
    Diagnostic("%s", std::string(100000, 'x').c_str());
  });
  EXPECT_EQ(text.substr(0, text.find('\n')), "[NKG]reply: F102 OK??[NKG]forged 7");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
  EXPECT_LT(text.size(), 2000U);
  EXPECT_EQ(g_debugOutput, text) << "which is written whatever the environment says";
}

}  // namespace
}  // namespace Nuv::Platform
