// NuvConnect5's exports in C++ terms.
#ifndef NUVCTL_LIBRARY_H_
#define NUVCTL_LIBRARY_H_

#include <string>
#include <vector>

#include "nuvconnect/NuvConnect5.h"

namespace nuvctl {

// The started library; one at a time. The connection is closed when it goes.
class Library {
 public:
  Library();
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

// Throws the failure of a library call that returned `result`, unless that is 0. `action`: what
// was being done, such as "Reading the state". Names the printer command that failed when the
// library told it.
void Check(int result, const std::string& action);

// The failure that Check would throw, for callers that add to it.
struct CommandError FailureOf(int result, const std::string& action);

// A buffer for one string output.
class TextBuffer {
 public:
  TextBuffer() : bytes_(NUV_TEXT_BYTES) {}
  char* Data() { return bytes_.data(); }
  std::string Text() const { return bytes_.data(); }

 private:
  std::vector<char> bytes_;
};

}  // namespace nuvctl

#endif  // NUVCTL_LIBRARY_H_
