// A lab whose host cancels its jobs when the test says so.
#ifndef NUV_TESTS_CONNECT_JOB_LAB_H_
#define NUV_TESTS_CONNECT_JOB_LAB_H_

#include <string>

#include "tests/connect/lab.h"
#include "tests/support/environment.h"

namespace Nuv::Connect {

// When the host cancels: at the question of this number, counted from 0; -1 never.
inline int g_cancelAt = -1;
inline int g_asked = 0;

class JobLab : public Lab {
 protected:
  void SetUp() override {
    Lab::SetUp();
    if (IsSkipped()) return;
    SetEnvironment("NUVFILE_LIBRARY", NUVFILE_LIBRARY_FILE);
    g_cancelAt = -1;
    g_asked = 0;
    framework.RegisterSendDataCancelCallback([] { return g_asked++ == g_cancelAt; });
  }

  static std::string TestName() {
    return ::testing::UnitTest::GetInstance()->current_test_info()->name();
  }
};

}  // namespace Nuv::Connect

#endif  // NUV_TESTS_CONNECT_JOB_LAB_H_
