#include <windows.h>

#include "platform/diagnostics.h"
#include "platform/process_claim.h"

namespace Nuv::Platform {

// A named object is there as long as somebody holds it: its existence is the claim.
ProcessClaim::ProcessClaim(const std::string& name) {
  const std::string whole =
      "Local\\nuvconnect-" + name + "-" + std::to_string(GetCurrentProcessId());
  HANDLE mutex = CreateMutexA(nullptr, FALSE, whole.c_str());
  const DWORD error = GetLastError();
  held_ = mutex == nullptr || error != ERROR_ALREADY_EXISTS;
  if (mutex == nullptr) {
    Diagnostic("%s: cannot be claimed: error %lu", name.c_str(), error);
    return;
  }
  handle_ = reinterpret_cast<intptr_t>(mutex);
}

ProcessClaim::~ProcessClaim() {
  if (handle_ != -1) CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

}  // namespace Nuv::Platform
