// Another protocol library's register read, to set a state query beside it. CMake chooses the file
// by whether that library is there.
#ifndef NUV_BENCH_REGISTER_READ_H_
#define NUV_BENCH_REGISTER_READ_H_

#include <cstdint>
#include <functional>

namespace Bench {

constexpr char kRegistersPart[] = "registers";

// Does the work of that part; see servers.h.
void ServeRegisters(uint16_t port);

// A call that reads one register from a server of its own, started here; empty without the library.
std::function<void()> MakeRegisterRead();

}  // namespace Bench

#endif  // NUV_BENCH_REGISTER_READ_H_
