#ifndef NUV_PRINTER_LISTS_H_
#define NUV_PRINTER_LISTS_H_

#include <variant>
#include <vector>

#include "nuvprinter/nuvprinter.h"
#include "printer/handles.h"

namespace Nuv::Printer {

// What a host gets as nuv_list.
using List = std::variant<std::vector<nuv_identity>, std::vector<nuv_access_point>>;

Handles<List, nuv_list>& Lists();

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_LISTS_H_
