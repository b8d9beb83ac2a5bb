// docs/protocol.md held against the simulator: each model answers the examples as the page shows
// them where it names the model, and refuses everything else.

#include "tests/support/protocol_page.h"

#include <set>

#include "fixture.h"

namespace NuvSim {
namespace {

namespace Page = ProtocolPage;

// The models of the page, and what it says of all others.
std::vector<Page::Row> Models() {
  std::vector<Page::Row> models = Page::Models();
  Page::Row other = models.back();
  for (auto& [head, cell] : other.cells) cell = head == "dental" ? "" : "x";
  other.cells["Model"] = "`a model of its own`";
  models.push_back(other);
  return models;
}

// The page's reply as a printer of this model gives it on this machine.
std::string AsHere(const std::string& reply, const Page::Row& model) {
  const std::regex name("M:Zafel Superfine"), address("192\\.168\\.1\\.[15]");
  return std::regex_replace(std::regex_replace(reply, name, "M:" + NameOf(model)), address,
                            "127.0.0.1");
}

// The bytes that follow an accepted request; the next one would else be taken for them.
std::string Payload(int code) {
  if (code == 141) return std::string(50000, 'e');
  if (code == 188) return std::string(21504, 'p');
  if (code == 506) return std::string("L105\xF8\x27\0\0", 8) + std::string(10232, 'a');
  return "";
}

// Asks what the page shows of this state, from top to bottom.
void Converse(Bench& bench, RawClient& client, const Page::Row& model, const std::string& state) {
  static const std::vector<Page::Row> kRows = Page::Rows("Code");
  std::set<std::string> answered;
  for (const Page::Row& row : kRows) {
    if (Page::Means(row["Models"], model)) answered.insert(Page::Quoted(row["Request"]).at(0));
  }
  for (const Page::Row& row : kRows) {
    const std::string request = Page::Quoted(row["Request"]).at(0);
    const bool isMeant = Page::Means(row["Models"], model);
    if (row["Request"] != "`" + request + "`" + state) continue;
    if (!isMeant && answered.count(request) == 1) continue;  // another row has its answer
    if (state.empty()) bench.sim->SetIdle(0);
    client.Send(request + "\r\n");
    const std::vector<std::string> refusal = {request.substr(0, 4) + " NG"};
    for (const std::string& reply : isMeant ? Page::Quoted(row["Reply"]) : refusal) {
      EXPECT_EQ(client.ReadLine(), AsHere(reply, model))
          << row.Where() << NameOf(model) << " was asked " << request;
    }
    if (isMeant) client.Send(Payload(Page::Codes(row["Code"]).at(0)));
  }
}

TEST(ProtocolPageTest, EachModelAnswersAsItSays) {
  constexpr std::chrono::seconds kHalfOfThePrint(300 * 9 / 2);
  std::string opening;
  for (const Page::Row& row : Page::Rows("Code")) {
    if (row["Code"] == "103") opening = Page::Quoted(row["Request"]).at(0);
  }
  for (const Page::Row& model : Models()) {
    Bench bench([&model](PrinterConfig& printer) {
      printer.model = NameOf(model);
      printer.name = "Lab one";
      printer.layerTime = std::chrono::seconds(9);
      printer.earlierJobs = {9, 1, 1};
    });
    const auto client = bench.Connect();
    ASSERT_EQ(client->Ask(opening), "F103 OK");
    client->Ask("F117");  // of a dental job, the header ends here
    client->Send(std::string(6750, '0') + "\r\n");
    ASSERT_TRUE(bench.WaitUntil([&] { return bench.sim->Status().state == State::kPrinting; }));
    bench.Pass(kHalfOfThePrint);
    Converse(bench, *client, model, " while printing");
    bench.Pass(kHalfOfThePrint);
    Converse(bench, *client, model, "");
  }
}

}  // namespace
}  // namespace NuvSim
