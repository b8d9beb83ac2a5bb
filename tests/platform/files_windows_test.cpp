#include <gtest/gtest.h>
#include <windows.h>

#include "platform/files.h"

namespace Nuv::Platform {
namespace {

std::wstring Widen(const std::string& narrow) {
  wchar_t wide[64] = {};
  MultiByteToWideChar(CP_ACP, 0, narrow.c_str(), -1, wide, 64);
  return wide;
}

TEST(NarrowPathTest, IsOfTheAnsiCodePage) {
  EXPECT_EQ(NarrowPath(L""), "");
  EXPECT_EQ(NarrowPath(L"C:\\a\\b.nuv"), "C:\\a\\b.nuv");
  const auto umlaut = NarrowPath(L"Kr\u00f6ne");
  ASSERT_TRUE(umlaut) << "code page " << GetACP();
  EXPECT_EQ(Widen(*umlaut), L"Kr\u00f6ne");
}

TEST(NarrowPathTest, RefusesWhatTheCodePageCannotHold) {
  if (GetACP() == CP_UTF8) GTEST_SKIP() << "this code page holds everything";
  EXPECT_FALSE(NarrowPath(L"\u6a21\u578b"));
  // Best-fit mapping would take this for "a", which names another file.
  EXPECT_FALSE(NarrowPath(L"\u0101"));
}

TEST(FileNameTest, IsWhatFollowsTheLastSeparator) {
  EXPECT_EQ(FileName(L"C:\\a b\\c.nuv"), L"c.nuv");
  EXPECT_EQ(FileName(L"C:/a/c.nuv"), L"c.nuv");
  EXPECT_EQ(FileName(L"C:c.nuv"), L"c.nuv");
}

}  // namespace
}  // namespace Nuv::Platform
