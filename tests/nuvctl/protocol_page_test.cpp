// What nuvctl knows of models is what docs/protocol.md tells of them.

#include "tests/support/protocol_page.h"

#include "command_fixture.h"

namespace NuvCtl {
namespace {

namespace Page = ProtocolPage;
using ProtocolPageTest = CommandTest;

// Every model refuses what the page does not say that it answers.
TEST_F(ProtocolPageTest, EachModelIsAskedWhatItAnswers) {
  const std::vector<Page::Row> rows = Page::Rows("Code");
  for (const Page::Row& model : Page::Models()) {
    SCOPED_TRACE(model.Where() + Page::NameOf(model));
    SetUp();
    g_fake.devices[0][NUV_DEVICE_MODEL] = Page::NameOf(model);
    std::ptrdiff_t flash = 0;  // parameters of the scan unit
    for (const Page::Row& row : rows) {
      const bool answers = Page::Means(row["Models"], model);
      for (const int code : Page::Codes(row["Code"])) {
        int& result = g_fake.results.emplace(code, NUV_PRINTER_REFUSED).first->second;
        if (answers) result = NUV_OK;
        const std::string reply = row["Reply"];
        if (answers && code == 327) flash = std::count(reply.begin(), reply.end(), ':');
      }
    }
    Ends({"resin"}, kDone);
    Ends({"info"}, kDone);
    EXPECT_EQ(document.contains("manufactured"), Page::Means("dental", model));
    if (flash == 0) continue;
    Ends({"sensors", "--flash"}, kDone);
    EXPECT_EQ(document["flash"].size(), static_cast<size_t>(flash));
  }
}

}  // namespace
}  // namespace NuvCtl
