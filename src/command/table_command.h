#ifndef NUV_COMMAND_TABLE_COMMAND_H_
#define NUV_COMMAND_TABLE_COMMAND_H_

#include <string>
#include <vector>

#include "command/catalogue.h"
#include "command/command_base.h"

namespace Nuv::Command {

// A command that behaves as its catalogue row says.
class TableCommand : public CommandBase {
 public:
  std::string BuildRequest() const override;
  std::vector<std::string> GetReplyValues() const override;
  bool IsReplyOk(const std::vector<std::string>& tokens) const override;
  std::vector<std::string> GetReplyKeys() const override;
  ResultMap GetResultMap() const override;

 protected:
  explicit TableCommand(const CommandRow& row) : CommandBase(row.code), row_(row) {}

  // "F" and the code, without the line end.
  std::string RequestHead() const { return "F" + std::to_string(row_.code); }

 private:
  const CommandRow& row_;
};

// Base of the class of one code.
template <int32_t Code>
class CatalogueCommand : public TableCommand {
  static constexpr size_t kPlace = RowPlace(Code);
  static_assert(kPlace < std::size(kRows), "a command class needs its row in the catalogue");

 public:
  static constexpr int32_t kCode = Code;
  CatalogueCommand() : TableCommand(kRows[kPlace]) {}
};

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_TABLE_COMMAND_H_
