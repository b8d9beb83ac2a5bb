#ifndef NUV_TESTS_SUPPORT_ENVIRONMENT_H_
#define NUV_TESTS_SUPPORT_ENVIRONMENT_H_

#include <cstdlib>

// Sets a variable of this process; an empty value takes it away.
inline void SetEnvironment(const char* name, const char* value) {
#if defined(_WIN32)
  _putenv_s(name, value);
#else
  if (*value == '\0') {
    unsetenv(name);
  } else {
    setenv(name, value, 1);
  }
#endif
}

#endif  // NUV_TESTS_SUPPORT_ENVIRONMENT_H_
