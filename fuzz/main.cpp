// The entry point of the fuzzer into the target that NUV_FUZZ_TARGET names.
#include "fuzz/targets.h"
#include "platform/diagnostics.h"

// Instead of the system's: a line for each of a million malformed replies would fill its log, and
// takes longer than reading them. Diagnostic itself still makes the line.
void Nuv::Platform::WriteDebugOutput(const std::string&) {}

// Declared here because no header of the fuzzing library and of the checks does.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" const char* __asan_default_options();  // NOLINT(bugprone-reserved-identifier): theirs

// An input is over long before what it has freed is used anew; more is only slower.
extern "C" const char* __asan_default_options() {  // NOLINT(bugprone-reserved-identifier)
  return "quarantine_size_mb=8:malloc_context_size=1";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Fuzz::NUV_FUZZ_TARGET(data, size);
  return 0;
}
