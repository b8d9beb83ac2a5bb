// What nuvctl knows of models is what docs/protocol.md tells of them.

#include "tests/support/protocol_page.h"

#include <filesystem>
#include <set>
#include <sstream>

#include "command_fixture.h"

namespace NuvCtl {
namespace {

namespace Page = ProtocolPage;
using ProtocolPageTest = CommandTest;

constexpr char kSources[] = NUV_SOURCE_FOLDER "/tools/nuvctl";

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

TEST_F(ProtocolPageTest, EachCommandOfAnExportIsAskedBySomeSubcommand) {
  std::ostringstream sources;
  for (const auto& each : std::filesystem::recursive_directory_iterator(kSources)) {
    if (each.path().extension() == ".cpp") sources << std::ifstream(each.path()).rdbuf();
  }
  const Page::Strings names = Page::Quoted(sources.str(), "\\b(API_\\w+)");
  const std::set<std::string> called(names.begin(), names.end());
  std::map<std::string, bool> asked;  // by code
  for (const Page::Row& row : Page::Rows("Code")) {
    for (const std::string& name : Page::Quoted(row["Export"], "`(API_\\w+)`")) {
      asked[row["Code"]] |= called.count(name) == 1;
    }
  }
  for (const auto& [code, isAsked] : asked) EXPECT_TRUE(isAsked) << "no subcommand asks " << code;
}

}  // namespace
}  // namespace NuvCtl
