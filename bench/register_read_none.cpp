#include "bench/register_read.h"

namespace Bench {

void ServeRegisters(uint16_t) {}
std::function<void()> MakeRegisterRead() { return {}; }

}  // namespace Bench
