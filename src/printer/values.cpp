#include "printer/values.h"

#include <QString>

#include "platform/files.h"

namespace Nuv::Printer {
namespace {

// The beginning of a UTF-8 text that fits, without half a character.
size_t LengthThatFits(const std::string& text, size_t most) {
  size_t length = std::min(text.size(), most);
  while (length < text.size() && length > 0 &&
         (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
    --length;
  }
  return length;
}

}  // namespace

std::string Repaired(const std::string& bytes) {
  QString text = QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
  return text.replace(QChar(0), QChar(QChar::ReplacementCharacter)).toStdString();
}

nuv_text Text(const std::string& bytes) {
  const std::string text = Repaired(bytes);
  nuv_text out = {};
  const size_t length = LengthThatFits(text, sizeof out.text - 1);
  std::memcpy(out.text, text.data(), length);
  out.flags = NUV_TEXT_KNOWN;
  if (text != bytes) out.flags |= NUV_TEXT_REPAIRED;
  if (length != text.size()) out.flags |= NUV_TEXT_CUT;
  return out;
}

HostFile FileOf(const char* path) {
  const QString text = QString::fromUtf8(path);
  if (text.isEmpty() || text.toStdString() != path) {
    throw Failure{NUV_RESULT_INVALID_ARGUMENT, "a path that is null, empty or no UTF-8"};
  }
  const std::wstring wide = text.toStdWString();
  return {wide, QString::fromStdWString(Platform::FileName(wide)).toStdString()};
}

}  // namespace Nuv::Printer
