// How a reply is read: its tokens, their values, the numbers in them. A reply is one line of tokens
// separated by blanks: the echoed code, "OK" or a refusal, then fields, in one of three shapes:
// "C:12", "IP=10.0.0.2", "S3".
#ifndef NUV_COMMAND_REPLY_VIEWS_H_
#define NUV_COMMAND_REPLY_VIEWS_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "command/abstract_command.h"
#include "command/catalogue.h"

namespace Nuv::Command {

using Tokens = std::vector<std::string>;

// Fields begin with this token; before it stand the code and the verdict.
constexpr size_t kFirstField = 2;

// Splits `reply` at blanks (carriage returns, line feeds and tabs count as blanks) and appends the
// pieces. Costs one pass.
void AppendTokens(const std::string& reply, Tokens& tokens);

// Of each token that holds ":", the text before the first one.
Tokens ColonKeys(const Tokens& tokens);

// The first character of each field token, and each field token without it.
Tokens LetterKeys(const Tokens& tokens);
Tokens LetterValues(const Tokens& tokens);

// Of each field that holds ":" or "=", the text behind the first one; tokens without either belong
// to the value before them, joined with one blank. A value in angle brackets goes on to the token
// that ends in ">" and has a field or nothing behind it, whatever it holds; they are taken off.
Tokens FieldValues(const Tokens& tokens);

// Of the first field token that holds ":", all that follows to the end of the line: for names that
// may hold anything but a line end. Of each later one, such as a piece of that name, its own rest,
// so that there are as many values as colon keys.
Tokens RestOfLineValues(const Tokens& tokens);

// Reads a named record. A key that ends in ":" or "=" must occur so; behind another one such a
// separator is passed over. A value is the rest of its token or, where the record's values go on
// (catalogue.h), read as by FieldValues. A value in angle brackets of the other records, which have
// one at most, ends at the last token of the reply that ends in ">". A token belongs to the longest
// key that it begins with; the first token of a key counts. Absent keys are normal.
ResultMap ReadRecord(const Tokens& tokens, const Record& record);

// ---- Numbers

// Faults of a reply that leave the library as exceptions, since hosts catch the standard classes.
// What each of them carries besides its text: the number of the command.
class ReplyError {
 public:
  int Code() const { return code_; }

 protected:
  explicit ReplyError(int code) : code_(code) {}
  ~ReplyError() = default;

 private:
  int code_;
};

class MalformedNumber final : public std::invalid_argument, public ReplyError {
 public:
  MalformedNumber(const char* text, int code) : std::invalid_argument(text), ReplyError(code) {}
};

class NumberOutOfRange final : public std::out_of_range, public ReplyError {
 public:
  NumberOutOfRange(const char* text, int code) : std::out_of_range(text), ReplyError(code) {}
};

// A printer that has a query for its serial number names none.
class NoSerialNumber final : public std::out_of_range, public ReplyError {
 public:
  explicit NoSerialNumber(int code)
      : std::out_of_range("the printer names no serial number"), ReplyError(code) {}
};

// The number that `text` begins with, in base 10: leading blanks are skipped, a sign is allowed,
// and the first character that is no digit ends it ("45%" is 45). `code`: of the command whose
// reply holds it. Throws MalformedNumber, a std::invalid_argument ("invalid stoi argument"), when
// there is no digit, NumberOutOfRange, a std::out_of_range ("stoi argument out of range"), beyond
// 32 bits: the host is promised these texts on every system.
int ParseDecimal(const std::string& text, int code);

// The fraction that `text` begins with, such as "1.050000", written with a point whatever the
// locale. Throws like ParseDecimal, with "stof" in place of "stoi".
float ParseFraction(const std::string& text, int code);

// `number` as "%f" writes it, with a point whatever the locale of the host program.
std::string Fixed(double number);

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_REPLY_VIEWS_H_
