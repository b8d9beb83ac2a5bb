// Reading replies: time by length, and how often a query allocates.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "bench/benchmarks.h"
#include "bench/figures.h"
#include "command/processors.h"
#include "tests/support/channel_stub.h"

namespace {

std::atomic<uint64_t> g_allocations{0};

}  // namespace

// Counts every allocation of this program.
void* operator new(size_t size) {
  ++g_allocations;
  if (void* const memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace Bench {
namespace {

using Nuv::Connect::GeneralCommandProc;

constexpr size_t kKib = 1024;

// A printer that always answers the same.
class OneReply final : public ChannelStub {
 public:
  explicit OneReply(std::string reply) : reply_(std::move(reply)) {}
  Nuv::Connect::Reply Transact(const Nuv::Connect::Request&) override { return {reply_}; }
  Nuv::Connect::Reply ReadAgain(Nuv::Platform::Interrupt*) override { return {reply_}; }

 private:
  std::string reply_;
};

// `head`, then fields until the reply is so long.
std::string Reply(const std::string& head, const std::string& field, size_t length) {
  std::string reply = head;
  while (reply.size() + field.size() < length) reply += field;
  return reply + "\r\n";
}

void Run(Nuv::Connect::IChannel& printer, int code) {
  GeneralCommandProc proc(Nuv::Command::CreateCommand(printer, code, {}));
  std::vector<std::string> values;
  if (proc.Process(values) != 0) std::abort();
}

// Microseconds to run command `code` on a reply of `length` bytes.
double MedianUs(int code, const std::string& head, const std::string& field, size_t length) {
  constexpr int kRuns = 201;
  OneReply printer(Reply(head, field, length));
  return Quantile(Sample(kRuns, [&] { Run(printer, code); }), 0.5) / 1000;
}

void Lengths(const std::string& what, int code, const std::string& head, const std::string& field) {
  double shorter = 0;
  double longest = 0;
  for (const size_t kib : {1, 4, 16, 64}) {
    shorter = longest;
    longest = MedianUs(code, head, field, kib * kKib);
    Report(what + ", " + std::to_string(kib) + " KiB", longest, "us", kib == 64 ? 1000 : 0);
  }
  Report(what + ", 64 KiB over four times 16 KiB", longest / (4 * shorter), "times", 1.5);
}

void Allocations(const char* what, int code, const std::string& reply, double limit) {
  OneReply printer(reply);
  Run(printer, code);
  const uint64_t before = g_allocations;
  Run(printer, code);
  Report(what, static_cast<double>(g_allocations - before), "times", limit);
}

}  // namespace

void RunParser() {
  std::printf("Reading replies\n");
  Lengths("named record (301)", 301, "F301 OK", " ZLT:12345 C_LI:3");
  Lengths("list of names (198)", 198, "F198 OK", " SSID=<Lab net two>");
  Lengths("brackets that never close (198)", 198, "F198 OK", " a:<b");
  Lengths("the same in a mixed record (190)", 190, "F190 OK", " S<b");
  Lengths("one long value (101)", 101, "F101 OK N:x", " word");
  Allocations("allocations of a state query (102)", 102, "F102 OK S:1 L:3 T:5 C:50% R:Job1\r\n",
              40);
  Allocations("allocations of a sensor query (301)", 301,
              "F301 OK C_T:28 C_B:27 ZLT:0 ZLB:1 V_S:2 L_S:80 W_H:1 Y_H:1 C_LI:1 C_P:1 P_S:1 Y_F:0 "
              "T_T:30\r\n",
              40);
}

}  // namespace Bench
