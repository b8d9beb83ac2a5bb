// Firmware images on the wire: block layout, pacing, cancel, a lost connection.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "job/firmware_transfer.h"
#include "tests/job/job_fixture.h"

namespace Nuv::Connect {
namespace {

using ::testing::ElementsAre;

class FirmwareTest : public JobTest {
 public:
  // Bytes that differ from block to block.
  static std::vector<uint8_t> Image(size_t size) {
    std::vector<uint8_t> image(size);
    for (size_t i = 0; i < size; ++i) image[i] = static_cast<uint8_t>(i % 251);
    return image;
  }
  int32_t SendImage(size_t size, BlockHeader header) {
    return SendFirmware(Context(), Image(size), header);
  }
  std::vector<size_t> BlockSizes() const {
    std::vector<size_t> sizes;
    for (const std::string& block : printer.Wire()) sizes.push_back(block.size());
    return sizes;
  }
  // The payloads joined, after a check of each header.
  static std::string WithoutHeaders(const Strings& blocks) {
    std::string image;
    for (const std::string& block : blocks) {
      const auto byte = [&](size_t i) { return static_cast<uint8_t>(block[i]); };
      EXPECT_EQ(block.substr(0, 4), "L105");
      EXPECT_EQ(byte(4) + (byte(5) << 8) + (byte(6) << 16) + (byte(7) << 24),
                static_cast<int>(block.size() - 8));
      image += block.substr(8);
    }
    return image;
  }
};

TEST_F(FirmwareTest, BlocksAreCutAtTheWiresSize) {
  struct Row {
    size_t image;
    std::vector<size_t> engine;
    std::vector<size_t> android;
  };
  const Row rows[] = {
      {0, {}, {}},
      {1, {1}, {9}},
      {10231, {10231}, {10239}},
      {10232, {10232}, {10240}},
      {10233, {10233}, {10240, 9}},
      {10240, {10240}, {10240, 16}},
      {10241, {10240, 1}, {10240, 17}},
      {20480, {10240, 10240}, {10240, 10240, 24}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.image);
    const std::vector<uint8_t> image = Image(row.image);
    const std::string expected(image.begin(), image.end());
    for (const BlockHeader header : {BlockHeader::kNone, BlockHeader::kL105}) {
      printer = ScriptedChannel();
      g_host = Host();
      const bool framed = header == BlockHeader::kL105;
      const std::vector<size_t>& sizes = framed ? row.android : row.engine;
      const int64_t before = clock.SleptMs();
      EXPECT_EQ(SendFirmware(Context(), image, header), NUV_OK);
      EXPECT_EQ(BlockSizes(), sizes);
      EXPECT_EQ(framed ? WithoutHeaders(printer.Wire()) : printer.Data(), expected);
      EXPECT_EQ(clock.SleptMs() - before, 15 * static_cast<int64_t>(sizes.size()));
      EXPECT_EQ(g_host.starts, 1);
      EXPECT_EQ(g_host.updates.size(), sizes.size());
      if (row.image > 0) {
        EXPECT_EQ(g_host.updates.back(),
                  std::pair(static_cast<int>(row.image), static_cast<int>(row.image)));
      }
    }
  }
}

TEST_F(FirmwareTest, CancelStopsBeforeTheNextBlock) {
  for (const int blocks : {0, 1, 2}) {
    SCOPED_TRACE(blocks);
    printer = ScriptedChannel();
    g_host = Host();
    g_host.cancelFrom = blocks;
    EXPECT_EQ(SendImage(30000, BlockHeader::kNone), NUV_CANCELLED);
    EXPECT_EQ(printer.Blocks(), static_cast<size_t>(blocks));
    EXPECT_EQ(g_host.updates.size(), static_cast<size_t>(blocks));
  }
  g_host = Host();
  g_host.cancelFrom = 3;
  EXPECT_EQ(SendImage(30000, BlockHeader::kNone), NUV_OK) << "asked before blocks only";
}

TEST_F(FirmwareTest, LostConnectionDoesNotStopTheTransfer) {
  printer.writesUntilFailure = 1;
  EXPECT_EQ(SendImage(30000, BlockHeader::kNone), NUV_OK);
  EXPECT_EQ(printer.Blocks(), 1U);
  EXPECT_THAT(g_host.updates, ElementsAre(std::pair(30000, 10240), std::pair(30000, 20480),
                                          std::pair(30000, 30000)));
}

std::function<void()> g_meanwhile;

TEST_F(FirmwareTest, LinkIsClaimedMeanwhileAndOneTransferRunsAtATime) {
  int32_t second = -1;
  int32_t announced = -1;
  g_meanwhile = [&] {
    EXPECT_FALSE(state.linkFree);
    second = SendImage(1, BlockHeader::kL105);
    announced = AnnounceImage(Context(), [] { return NUV_OK; });
    EXPECT_FALSE(state.linkFree) << "still the first one's";
  };
  callbacks.sendUpdate = [](int, int) { g_meanwhile(); };
  EXPECT_EQ(SendImage(1, BlockHeader::kNone), NUV_OK);
  EXPECT_EQ(second, NUV_FAILED);
  EXPECT_EQ(announced, NUV_FAILED);
  EXPECT_EQ(printer.Blocks(), 1U);
}

// A callback must not throw; when it does, the next transfer works all the same.
TEST_F(FirmwareTest, ThrowingCallbackLeavesTheLinkFree) {
  callbacks.sendUpdate = [](int, int) { throw std::runtime_error("host"); };
  EXPECT_THROW(SendImage(1, BlockHeader::kNone), std::runtime_error);
  EXPECT_TRUE(state.linkFree);
  callbacks.sendUpdate = nullptr;
  EXPECT_EQ(SendImage(1, BlockHeader::kNone), NUV_OK);
}

}  // namespace
}  // namespace Nuv::Connect
