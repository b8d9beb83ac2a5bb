// What nuvctl knows of models is what docs/protocol.md tells of them.

#include "tests/support/protocol_page.h"

#include "command_fixture.h"

namespace nuvctl {
namespace {

namespace page = protocol_page;
using ProtocolPageTest = CommandTest;

// Every model refuses what the page does not say that it answers.
TEST_F(ProtocolPageTest, EachModelIsAskedWhatItAnswers) {
  const std::vector<page::Row> rows = page::Rows("Code");
  for (const page::Row& model : page::Models()) {
    SCOPED_TRACE(model.Where() + page::NameOf(model));
    SetUp();
    fake.devices[0][NUV_DEVICE_MODEL] = page::NameOf(model);
    std::ptrdiff_t flash = 0;  // parameters of the scan unit
    for (const page::Row& row : rows) {
      const bool answers = page::Means(row["Models"], model);
      for (const int code : page::Codes(row["Code"])) {
        int& result = fake.results.emplace(code, NUV_PRINTER_REFUSED).first->second;
        if (answers) result = NUV_OK;
        const std::string reply = row["Reply"];
        if (answers && code == 327) flash = std::count(reply.begin(), reply.end(), ':');
      }
    }
    Ends({"resin"}, kDone);
    Ends({"info"}, kDone);
    EXPECT_EQ(document.contains("manufactured"), page::Means("dental", model));
    if (flash == 0) continue;
    Ends({"sensors", "--flash"}, kDone);
    EXPECT_EQ(document["flash"].size(), static_cast<size_t>(flash));
  }
}

}  // namespace
}  // namespace nuvctl
