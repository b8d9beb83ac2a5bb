#include <gtest/gtest.h>
#include <unistd.h>

#include <clocale>

#include "platform/files.h"

namespace Nuv::Platform {
namespace {

TEST(NarrowPathTest, IsUtf8WhateverTheLocale) {
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(NarrowPath(L""), "");
  EXPECT_EQ(NarrowPath(L"/a/b.nuv"), "/a/b.nuv");
  EXPECT_EQ(NarrowPath(L"Kr\u00f6ne"), "Kr\xc3\xb6ne");
  EXPECT_EQ(NarrowPath(L"\u6a21\u578b"), "\xe6\xa8\xa1\xe5\x9e\x8b");
  // The first and last of each length.
  EXPECT_EQ(NarrowPath(L"\x7f\u0080\u07ff\u0800\uffff\U00010000\U0010ffff"),
            "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
}

TEST(NarrowPathTest, RefusesWhatIsNoCharacter) {
  EXPECT_FALSE(NarrowPath(std::wstring(1, static_cast<wchar_t>(0xD800))));
  EXPECT_FALSE(NarrowPath(std::wstring(1, static_cast<wchar_t>(0xDFFF))));
  EXPECT_FALSE(NarrowPath(std::wstring(1, static_cast<wchar_t>(0x110000))));
}

TEST(RegularFileTest, LeavesNoDescriptorOpen) {
  const int unused = dup(STDIN_FILENO);
  close(unused);
  EXPECT_TRUE(RegularFile("/proc/self/exe").IsOpen());
  EXPECT_FALSE(RegularFile("/dev/null").IsOpen());
  EXPECT_EQ(dup(STDIN_FILENO), unused);
  close(unused);
}

}  // namespace
}  // namespace Nuv::Platform
