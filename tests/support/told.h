#ifndef NUV_TESTS_TOLD_H_
#define NUV_TESTS_TOLD_H_

#include <gtest/gtest.h>

#include <string>

#include "tests/support/environment.h"

// What the library tells (platform/diagnostics.h) while `act` runs.
template <class Act>
std::string ToldBy(const Act& act) {
  SetEnvironment("NUVCONNECT_DEBUG", "1");
  ::testing::internal::CaptureStderr();
  act();
  SetEnvironment("NUVCONNECT_DEBUG", "");
  return ::testing::internal::GetCapturedStderr();
}

#endif  // NUV_TESTS_TOLD_H_
