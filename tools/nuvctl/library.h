// NuvConnect5's exports in C++ terms.
#ifndef NUVCTL_LIBRARY_H_
#define NUVCTL_LIBRARY_H_

#include <string>
#include <vector>

#include "nuvconnect/NuvConnect5.h"

namespace NuvCtl {

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

// Likewise for a query that not every model has: says so when the printer refused it.
void CheckQuery(int result, const std::string& action);

// Likewise for an order: `hint` is the advice when the printer refused it.
void CheckOrder(int result, const std::string& action, const std::string& hint);

// For a query that may be missing: whether it was answered. False when the printer refused it;
// throws any other failure.
bool Answered(int result, const std::string& action);

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

// Buffers for a string list, in the layout that the library writes.
class TextList {
 public:
  static constexpr int kLength = 255;  // longest entry; a buffer has one byte more, for the NUL

  explicit TextList(int capacity);
  char** Data() { return entries_.data(); }
  int Capacity() const { return static_cast<int>(entries_.size()); }
  std::string Text(int i) const { return entries_[static_cast<size_t>(i)]; }

 private:
  std::vector<char> bytes_;
  std::vector<char*> entries_;
};

// All strings of `query`, one of the library's string lists. Throws as CheckQuery does.
using ListQuery = int (*)(char** list, int* count, int entrySize);
std::vector<std::string> ReadList(ListQuery query, const std::string& action);

}  // namespace NuvCtl

#endif  // NUVCTL_LIBRARY_H_
