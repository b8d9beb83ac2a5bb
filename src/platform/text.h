#ifndef NUV_PLATFORM_TEXT_H_
#define NUV_PLATFORM_TEXT_H_

#include <optional>
#include <string>

namespace Nuv::Platform {

// The narrow form of a wide path, as this system's file functions take it: UTF-8 on Linux, whatever
// the locale; the ANSI code page on Windows. Nothing when the path has no such form.
std::optional<std::string> NarrowPath(const std::wstring& path);

// The last part of a path, without its folders.
std::wstring FileName(const std::wstring& path);

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_TEXT_H_
