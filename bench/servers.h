// The least that a benchmark measures against, each in a process of its own: this program, started
// again as `nuv_bench --serve PART PORT`.
#ifndef NUV_BENCH_SERVERS_H_
#define NUV_BENCH_SERVERS_H_

#include <cstdint>
#include <string>

#include "bench/process.h"

namespace Bench {

constexpr char kServeOption[] = "--serve";
// The barest printer there can be, for one client after the other.
constexpr char kCommandsPart[] = "commands";
// Answers searches for the printer on PORT.
constexpr char kSearchPart[] = "search";

constexpr char kServerHost[] = "127.0.0.1";
constexpr char kStateRequest[] = "F102\r\n";
constexpr char kStateReply[] = "F102 OK S:0\r\n";

// Starts `part`; it listens when this returns.
Child StartServer(const std::string& part, uint16_t port);

// Does the work of `part` in the process started for it; does not return.
[[noreturn]] void Serve(const std::string& part, uint16_t port);

// Whether this machine is the private one, in which searching reaches nobody else.
bool InPrivateNetwork();

}  // namespace Bench

#endif  // NUV_BENCH_SERVERS_H_
