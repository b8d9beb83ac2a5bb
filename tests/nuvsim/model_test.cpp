// Which model answers which command: held against the models table of the protocol page itself.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "fixture.h"

namespace nuvsim {
namespace {

using Words = std::vector<std::string>;

// The commands that need a column of the table; those of all models stand under its head.
const std::map<std::string, Words> kProbes = {
    {"Model",
     {"F101", "F102", "F107", "F117", "F157", "F159 S1", "F160 S1 C1", "F192", "F196 a", "F197",
      "F332 S1 V1", "F369", "F370 X1,1 Y1,1 Z1,1"}},
    {"resin 105", {"F105"}},
    {"resin 120", {"F120"}},
    {"laser", {"F112", "F159 S0", "F332 S0 V1"}},
    {"LSU", {"F186 L1", "F303 S1", "F327"}},
    {"LED", {"F708"}},
    {"sensors", {"F301"}},
    {"wireless", {"F190", "F190 SLab net", "F191 S2", "F192 S1", "F198"}},
    {"history",
     {"F169 S0", "F170", "F171 S1", "F174 S1", "F175 S1", "F176 S1", "F177 S1", "F219", "F335"}},
    {"Android", {"F310", "F503", "F504 A0", "F515"}},
    {"dental", {"F140", "F353", "F354", "F355 M1=2", "F356", "F367 =a"}},
};

Words Cells(const std::string& line) {
  std::istringstream stream(line.substr(1));
  Words cells;
  for (std::string cell; std::getline(stream, cell, '|');) {
    const auto first = cell.find_first_not_of(" `");
    cells.push_back(first == std::string::npos
                        ? ""
                        : cell.substr(first, cell.find_last_not_of(" `") - first + 1));
  }
  return cells;
}

// Head and rows of the page's models table.
std::vector<Words> ModelsTable() {
  std::ifstream page(NUV_PROTOCOL_PAGE);
  std::vector<Words> rows;
  for (std::string line; std::getline(page, line);) {
    if (rows.empty() ? line.rfind("| Model |", 0) == 0 : line.rfind("| `", 0) == 0) {
      rows.push_back(Cells(line));
    } else if (!rows.empty() && line.rfind("|---", 0) != 0) {
      break;
    }
  }
  return rows;
}

// Asks everything with a job in the history; a model that lacks the column answers the head and
// NG alone.
void ExpectAnswers(const std::string& model, const std::map<std::string, bool>& columns) {
  Bench bench([&](PrinterConfig& printer) { printer.model = model; });
  const auto client = bench.Connect();
  client->Send(JobRequest(0));
  ASSERT_EQ(client->ReadLine(), "F103 OK");
  const auto ask = [&](const std::string& request, bool isKnown) {
    const std::string head = request.substr(0, request.find(' '));
    const std::string reply = client->Ask(request);
    if (request.rfind("F160", 0) == 0) client->ReadLine();
    if (isKnown) {
      EXPECT_EQ(reply.substr(0, head.size() + 3), head + " OK") << model << ": " << request;
    } else {
      EXPECT_EQ(reply, head + " NG") << model << ": " << request;
    }
  };
  for (const auto& [column, has] : columns) {
    for (const std::string& request : kProbes.at(column)) ask(request, has);
  }
}

TEST(ModelTest, AnswersWhatTheProtocolPageSaysAndNoMore) {
  const std::vector<Words> table = ModelsTable();
  ASSERT_EQ(table.size(), 12u);
  ASSERT_EQ(table.front().size(), kProbes.size());
  for (std::size_t row = 1; row < table.size(); ++row) {
    std::map<std::string, bool> columns;
    for (std::size_t i = 0; i < table[row].size(); ++i) {
      columns[table.front()[i]] = i == 0 || table[row][i] == "x";
    }
    ExpectAnswers(table[row].front(), columns);
  }
}

}  // namespace
}  // namespace nuvsim
