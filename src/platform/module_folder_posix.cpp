#include <dlfcn.h>

#include "platform/module_folder.h"

namespace Nuv::Platform {

std::string ModuleFolder() {
  Dl_info module{};
  if (dladdr(reinterpret_cast<void*>(&ModuleFolder), &module) == 0) return {};
  const std::string file = module.dli_fname;
  const size_t slash = file.rfind('/');
  return slash == std::string::npos ? std::string() : file.substr(0, slash);
}

}  // namespace Nuv::Platform
