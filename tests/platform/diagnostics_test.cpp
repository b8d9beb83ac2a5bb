#include "platform/diagnostics.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/environment.h"

namespace Nuv::Platform {
namespace {

TEST(DiagnosticTest, IsOnePrefixedLineThatTextCannotBreak) {
  SetEnvironment("NUVCONNECT_DEBUG", "1");
  ::testing::internal::CaptureStderr();
  Diagnostic("reply: %s %d", "F102 OK\r\n[NKG]forged", 7);
  Diagnostic("%s", std::string(100000, 'x').c_str());
  const std::string text = ::testing::internal::GetCapturedStderr();
  SetEnvironment("NUVCONNECT_DEBUG", "");
  EXPECT_EQ(text.substr(0, text.find('\n')), "[NKG]reply: F102 OK??[NKG]forged 7");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
  EXPECT_LT(text.size(), 2000U);
}

}  // namespace
}  // namespace Nuv::Platform
