#ifndef NUV_COMMAND_DECIMAL_H_
#define NUV_COMMAND_DECIMAL_H_

#include <cstdint>
#include <string>

namespace Nuv::Command {

// The number that `text` begins with, in base 10: leading blanks are skipped, a sign is allowed,
// and the first character that is no digit ends it ("45%" is 45). `code`: of the command whose
// reply holds it. Throws MalformedNumber, a std::invalid_argument ("invalid stoi argument"), when
// there is no digit, NumberOutOfRange, a std::out_of_range ("stoi argument out of range"), beyond
// 32 bits: the host is promised these texts on every system.
int32_t ParseDecimal(const std::string& text, int32_t code);

// The fraction that `text` begins with, such as "1.050000", written with a point whatever the
// locale. Throws like ParseDecimal, with "stof" in place of "stoi".
float ParseFraction(const std::string& text, int32_t code);

// `number` as "%f" writes it, with a point whatever the locale of the host program.
std::string Fixed(double number);

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_DECIMAL_H_
