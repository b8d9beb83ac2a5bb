// Firmware images on the wire: block layout, pacing, cancel, a lost connection.

#include <gtest/gtest.h>

#include <algorithm>

#include "job/block_transfer.h"
#include "tests/job/job_fixture.h"

namespace Nuv::Connect {
namespace {

class FirmwareTest : public JobTest {
 public:
  // Bytes that differ from block to block.
  static std::string Image(size_t size) {
    std::string image(size, ' ');
    for (size_t i = 0; i < size; ++i) image[i] = static_cast<char>(i % 251);
    return image;
  }
  int SendImage(size_t size, BlockHeader header) {
    const std::string image = Image(size);
    return SendFirmware(Context(), {image.begin(), image.end()}, header);
  }
};

TEST_F(FirmwareTest, BlocksAreCutAtTheWiresSize) {
  using Sizes = std::vector<size_t>;
  const std::tuple<size_t, Sizes, Sizes> rows[] = {
      {0, {}, {}},
      {10232, {10232}, {10232}},
      {10233, {10233}, {10232, 1}},
      {10240, {10240}, {10232, 8}},
      {10241, {10240, 1}, {10232, 9}},
      {20480, {10240, 10240}, {10232, 10232, 16}},
  };
  for (const auto& [image, unframedSizes, framedSizes] : rows) {
    for (const bool framed : {false, true}) {
      SCOPED_TRACE(image);
      StartAnew();
      Strings blocks;
      std::vector<std::pair<int, int>> updates;
      size_t sent = 0;
      for (const size_t size : framed ? framedSizes : unframedSizes) {
        const std::string payload = Image(image).substr(sent, size);
        blocks.push_back(framed ? Frame(payload) : payload);
        updates.emplace_back(image, sent += size);
      }
      const int64_t before = clock.SleptMs();
      EXPECT_EQ(SendImage(image, framed ? BlockHeader::kL105 : BlockHeader::kNone), NUV_OK);
      EXPECT_EQ(printer.Wire(), blocks);
      EXPECT_EQ(g_host.updates, updates);
      EXPECT_EQ(g_host.starts, 1);
      EXPECT_EQ(clock.SleptMs() - before, 15 * static_cast<int64_t>(blocks.size()));
    }
  }
}

// An image of three blocks. The host is asked before each of them, and never told of a loss.
TEST_F(FirmwareTest, CancelStopsTheTransferAndALostConnectionDoesNot) {
  const std::tuple<Fault, int, size_t, size_t> rows[] = {
      {CancelledFrom(0), NUV_CANCELLED, 0, 0}, {CancelledFrom(1), NUV_CANCELLED, 1, 1},
      {CancelledFrom(2), NUV_CANCELLED, 2, 2}, {CancelledFrom(3), NUV_OK, 3, 3},
      {WritesFailAfter(1), NUV_OK, 1, 3},
  };
  for (const auto& [fault, result, blocks, updates] : rows) {
    StartAnew();
    fault(*this);
    told = ToldBy(
        [&, expected = result] { EXPECT_EQ(SendImage(30000, BlockHeader::kNone), expected); });
    EXPECT_EQ(told.find("the block that ends at byte 20480 of 30000 is not") != std::string::npos,
              blocks != updates);
    EXPECT_LE(std::count(told.begin(), told.end(), '\n'), 1) << "told once";
    EXPECT_EQ(printer.Blocks(), blocks);
    EXPECT_EQ(g_host.updates.size(), updates);
    EXPECT_EQ(printer.endedComplete, result == NUV_OK) << "else what is queued may go";
  }
}

// Of libnuvprinter: what is not taken goes on, what is lost ends it.
TEST_F(FirmwareTest, ALostConnectionEndsATransferThatWantsIt) {
  const std::string image = Image(30000);
  const auto send = [&] {
    return SendFirmware(Context(), {image.begin(), image.end()}, BlockHeader::kNone,
                        LostLink::kEndsTransfer);
  };
  WritesFailAfter(1)(*this);
  EXPECT_EQ(send(), NUV_OK) << "the link stands";
  EXPECT_EQ(g_host.updates.size(), 3U);
  StartAnew();
  printer.writesUntilFailure = 1;
  printer.endsAfterBlocks = 1;
  EXPECT_EQ(send(), NUV_WRITE_FAILED);
  EXPECT_EQ(g_host.updates.size(), 1U);
  StartAnew();
  printer.endsAfterBlocks = 1;
  EXPECT_EQ(send(), NUV_OK) << "all was taken";
}

std::function<void()> g_meanwhile;

TEST_F(FirmwareTest, LinkIsClaimedMeanwhileAndOneTransferRunsAtATime) {
  int second = -1;
  int announced = -1;
  g_meanwhile = [&] {
    EXPECT_FALSE(state.linkFree);
    EXPECT_EQ(printer.job, JobKind::kImage);
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

// The printer takes every line for a part of the image until it has waited a second for one.
TEST_F(FirmwareTest, StatusThreadIsQuietBehindAnAcceptedAnnouncementOnly) {
  EXPECT_EQ(AnnounceImage(Context(), [] { return NUV_PRINTER_REFUSED; }), NUV_PRINTER_REFUSED);
  EXPECT_LE(state.quietUntil.load(), clock.Now());
  EXPECT_EQ(AnnounceImage(Context(),
                          [this] {
                            EXPECT_FALSE(state.linkFree);
                            EXPECT_EQ(printer.job, JobKind::kLines)
                                << "a command that is not taken ends";
                            return NUV_OK;
                          }),
            NUV_OK);
  EXPECT_EQ(state.quietUntil.load(), clock.Now() + std::chrono::seconds(1));
}

}  // namespace
}  // namespace Nuv::Connect
