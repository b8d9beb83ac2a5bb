#include "connect/reply_ledger.h"

#include <algorithm>

namespace Nuv::Connect {
namespace {

// A host that writes line after line of its own and reads nothing must not fill the memory.
constexpr size_t kMostDebts = 64;

constexpr char kBlanks[] = " \t\r\n";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The digits behind the first letter of a request or a reply, which stands behind blanks.
std::string CodeOf(const std::string& line) {
  const size_t letter = line.find_first_not_of(kBlanks);
  if (letter == std::string::npos) return {};
  const auto first = line.begin() + static_cast<std::ptrdiff_t>(letter) + 1;
  return {first, std::find_if_not(first, line.end(), IsDigit)};
}

}  // namespace

void ReplyLedger::Asked(const std::string& request) {
  answered_ = false;
  owed_.push_back({CodeOf(request), written_});
  if (owed_.size() > kMostDebts) owed_.pop_front();
}

void ReplyLedger::Answered(const std::string& reply) {
  if (reply.empty()) return;
  answered_ = true;
  // Two answers may come in one piece. The first part of one confirms as well as the whole, but
  // pays nothing before its end has come.
  for (size_t start = 0; Owes();) {
    const size_t end = reply.find('\n', start);
    const std::string line = reply.substr(start, end - start);
    const Debt& debt = owed_.front();
    if (!debt.code.empty() && CodeOf(line) == debt.code) confirmed_ = debt.position;
    if (end == std::string::npos) return;
    // An empty line is no answer.
    if (line.find_first_not_of(kBlanks) != std::string::npos) owed_.pop_front();
    start = end + 1;
  }
}

void ReplyLedger::Discarded() {
  if (Owes()) owed_.pop_front();
}

}  // namespace Nuv::Connect
