#ifndef NUV_PLATFORM_MODULE_FOLDER_H_
#define NUV_PLATFORM_MODULE_FOLDER_H_

#include <string>

namespace Nuv::Platform {

// The folder of the file that this code was loaded from (the library, or a program it is linked
// into), without a final separator; empty when the system does not tell. UTF-8.
std::string ModuleFolder();

}  // namespace Nuv::Platform

#endif  // NUV_PLATFORM_MODULE_FOLDER_H_
