// What crosses the C boundary: texts, numbers, structures that know their size.
#ifndef NUV_PRINTER_VALUES_H_
#define NUV_PRINTER_VALUES_H_

#include <algorithm>
#include <cstring>
#include <string>

#include "printer/failure.h"

namespace Nuv::Printer {

// With U+FFFD in place of zeros and of what is no UTF-8.
std::string Repaired(const std::string& bytes);

// A known text: what is no UTF-8 or cannot stand in a text of C is replaced, what is too long cut
// between characters, and both are told.
nuv_text Text(const std::string& bytes);

// A file as the host names it.
struct HostFile {
  std::wstring path;
  std::string name;  // without folders, for a person
};

// Throws Failure for a path that is null, empty or no UTF-8.
HostFile FileOf(const char* path);

inline nuv_int Known(int number) { return {1, number}; }

// That the caller's structure can be filled, which it is with zeros; its size stays. Outputs are
// checked before anything is asked of a printer.
template <class T>
void Prepare(T* out) {
  if (out == nullptr || out->size < sizeof(T)) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "an output that is null, or whose size is not set"};
  }
  std::memset(reinterpret_cast<char*>(out) + sizeof out->size, 0, out->size - sizeof out->size);
}

// Copies the part that both sides know to the caller's structure, whose size stays, and zeroes what
// only the caller knows.
template <class T>
void HandOut(T value, T* out) {
  Prepare(out);
  value.size = out->size;
  std::memcpy(out, &value, sizeof value);
}

// The caller's structure as this version knows it; without one, the defaults.
template <class T>
T Given(const T* in) {
  T value = NUV_INIT(T);
  if (in == nullptr) return value;
  if (in->size < sizeof(T)) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a structure whose size is not set"};
  }
  std::memcpy(&value, in, sizeof value);
  return value;
}

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_VALUES_H_
