// What is fed with arbitrary bytes: by a fuzzer, and by the ordinary tests from fuzz/corpus.
//
// Each target reads one input and keeps nothing of it for the next, so that a file of the corpus
// shows its fault every time. It throws BrokenPromise when what was read is not what its reader
// promises; what else is wrong, the checks of the compiler see.
#ifndef FUZZ_TARGETS_H_
#define FUZZ_TARGETS_H_

#include <cstddef>
#include <cstdint>
#include <stdexcept>

namespace Fuzz {

class BrokenPromise final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline void Require(bool condition, const char* promise) {
  if (!condition) throw BrokenPromise(promise);
}

void Control(const uint8_t* data, size_t size);    // what is asked of nuvsim's control language
void Discovery(const uint8_t* data, size_t size);  // what answers a search
void NuvFile(const uint8_t* data, size_t size);    // a print file
void Reply(const uint8_t* data, size_t size);      // what a printer answers to a command
void Usbip(const uint8_t* data, size_t size);      // what a host sends to nuvsim's USB
inline void Empty(const uint8_t*, size_t) {}       // nothing: what the fuzzer itself costs

}  // namespace Fuzz

#endif  // FUZZ_TARGETS_H_
