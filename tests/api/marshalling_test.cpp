// The life cycle, and how strings and lists are copied.

#include "api/marshalling.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <tuple>

#include "nuvconnect/IConnectingFramework.h"
#include "nuvconnect/NuvConnect5.h"

namespace {

using Strings = std::vector<std::string>;

// Buffers filled with a mark, so that every byte written, and none besides, can be seen.
constexpr char kMark = '#';

TEST(LifeCycleTest, OneInstanceUntilClosed) {
  API_Close();
  EXPECT_EQ(API_Initial(), NUV_OK);
  const auto* const first = g_framework;
  EXPECT_EQ(API_Initial(), NUV_OK);
  EXPECT_EQ(g_framework, first);
  const std::unique_ptr<Nuv::Connect::IConnectingFramework> own(GetConnectingInstance());
  const std::unique_ptr<Nuv::Connect::IConnectingFramework> other(GetConnectingInstance());
  EXPECT_NE(own.get(), other.get());
  EXPECT_NE(own.get(), first);
  EXPECT_EQ(API_ConnectNetWorkDevice(nullptr), NUV_CONNECTION_REFUSED);
  API_Close();
  API_Close();
  EXPECT_EQ(API_ChooseDevice(1, 0), NUV_NO_INSTANCE);
  EXPECT_EQ(own->ChooseDevice(1, 0), NUV_CONNECTION_REFUSED) << "of its own, still alive";
}

TEST(LifeCycleTest, NullCommandGetsAnEmptyReply) {
  API_Initial();
  char reply[4] = {kMark};
  EXPECT_EQ(API_NUVCONNECT_ExecutiveCommand(nullptr, reply, 3), NUV_OK);
  EXPECT_STREQ(reply, "");
  API_Close();
}

TEST(CopyListTest, CutsToTheEntrySizeAndTellsTheFullCount) {
  char buffers[5][7];
  char* list[5];
  const struct {
    Strings strings;
    int room, entrySize;
    Strings copied;
  } kRows[] = {
      {{"a", "b", "c", "d", "e"}, 3, 4, {"a", "b", "c"}},
      {{"abc", "abcd", "abcde", ""}, 5, 4, {"abc", "abcd", "abcd", ""}},
      {{"a"}, -1, 4, {}},
      {{"a"}, 1, 0, {""}},
  };
  for (const auto& row : kRows) {
    std::memset(buffers, kMark, sizeof buffers);
    for (int i = 0; i < 5; ++i) list[i] = buffers[i];
    int count = row.room;
    Nuv::Api::CopyList(row.strings, list, &count, row.entrySize);
    EXPECT_EQ(count, static_cast<int>(row.strings.size()));
    for (size_t i = 0; i < 5; ++i) {
      if (i < row.copied.size()) {
        EXPECT_STREQ(buffers[i], row.copied[i].c_str());
        EXPECT_EQ(buffers[i][row.copied[i].size() + 1], kMark);
      } else {
        EXPECT_EQ(buffers[i][0], kMark);
      }
    }
  }
}

TEST(CopyTextTest, ReplyIsCutAtMaxLen) {
  char reply[8];
  for (const auto& [text, maxLen, expected] : {std::tuple("abcdef", 3, "abc"),
                                               {"abc", 3, "abc"},
                                               {"ab", 3, "ab"},
                                               {"ab", 0, ""},
                                               {"ab", -1, ""}}) {
    std::memset(reply, kMark, sizeof reply);
    Nuv::Api::CopyTextCut(text, reply, maxLen);
    EXPECT_STREQ(reply, expected);
    EXPECT_EQ(reply[std::strlen(expected) + 1], kMark);
  }
  for (const int length : {0, -1}) {
    EXPECT_TRUE(std::vector<uint8_t>(Nuv::Api::Bytes{nullptr, length}).empty());
  }
}

TEST(CopyTextTest, BrokenPrinterDoesNotWriteBehindAPromisedBuffer) {
  std::vector<char> out(NUV_TEXT_BYTES + 1, kMark);
  Nuv::Api::TextOut text{out.data()};
  for (const size_t length : {size_t{300}, size_t{NUV_TEXT_BYTES} * 2}) {
    text.text.assign(length, 'x');
    HandOut(text, NUV_FAILED);
    EXPECT_EQ(std::strlen(out.data()), std::min(length, size_t{NUV_TEXT_BYTES} - 1));
  }
  EXPECT_EQ(out.back(), kMark);
}

}  // namespace
