#include "bench/register_read.h"

namespace bench {

void ServeRegisters(uint16_t) {}
std::function<void()> MakeRegisterRead() { return {}; }

}  // namespace bench
