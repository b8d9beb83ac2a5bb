// A print-file library that lies: what each function answers, its test says.

#include "tests/job/print_file_library_fake.h"

#include <algorithm>
#include <cstring>

namespace {

FakeAnswers g_answers;

// The length that is told, and so many bytes as fit.
int Fill(const std::string& text, int length, void* out, int capacity) {
  if (out != nullptr) {
    std::memcpy(out, text.data(), std::min(text.size(), static_cast<size_t>(capacity)));
  }
  return length;
}

// The first call tells the length.
int Twice(const std::pair<int, int>& lengths, void* out, int capacity) {
  return Fill("abcdefgh", out == nullptr ? lengths.first : lengths.second, out, capacity);
}

}  // namespace

extern "C" {
FAKE_API FakeAnswers* Answers() { return &g_answers; }
FAKE_API int Load(const char*) { return g_answers.load; }
FAKE_API void Close() { ++g_answers.closes; }
FAKE_API int GetMachineID(char* out, int capacity) { return Twice(g_answers.text, out, capacity); }
FAKE_API int GetProjectID(char* out, int capacity) { return Twice(g_answers.text, out, capacity); }
FAKE_API int GetMaterialID(char* out, int capacity) { return Twice(g_answers.text, out, capacity); }
FAKE_API int GetFileArguments(char* out, int capacity) {
  return Twice(g_answers.text, out, capacity);
}
FAKE_API int GetModelDataSize() { return 7; }
FAKE_API int ReadLayer(int, unsigned char* out, int capacity, float) {
  const auto& lengths = g_answers.lines;
  const int length = lengths[std::min(g_answers.reads++, lengths.size() - 1)];
  return Fill(std::string(static_cast<size_t>(std::max(length, 0)), 'x'), length, out, capacity);
}
FAKE_API int ReadPreImg(unsigned char* out, int capacity) {
  return Twice(g_answers.bytes, out, capacity);
}
FAKE_API int ReadL101(unsigned char* out, int capacity) {
  return Twice(g_answers.bytes, out, capacity);
}
FAKE_API int ReadL102(unsigned char* out, int capacity) {
  return Twice(g_answers.bytes, out, capacity);
}
FAKE_API int ReadL103(unsigned char* out, int capacity) {
  return Twice(g_answers.bytes, out, capacity);
}
FAKE_API int GetAESkey(unsigned char* out, int capacity) {
  return Twice(g_answers.bytes, out, capacity);
}
}
