#ifndef NUV_TESTS_PRINT_FILE_LIBRARY_FAKE_H_
#define NUV_TESTS_PRINT_FILE_LIBRARY_FAKE_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#ifdef _WIN32
#define FAKE_API __declspec(dllexport)
#else
#define FAKE_API __attribute__((visibility("default")))
#endif

// What the fake library answers.
struct FakeAnswers {
  int load = 0;
  int closes = 0;
  std::pair<int, int> text{3, 3};   // lengths of the first and the second call
  std::pair<int, int> bytes{3, 3};  // likewise
  std::vector<int> lines{3};        // lengths of one call after the other
  size_t reads = 0;
};

#endif  // NUV_TESTS_PRINT_FILE_LIBRARY_FAKE_H_
