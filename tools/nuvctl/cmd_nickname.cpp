#include <CLI/CLI.hpp>

#include "field_report.h"
#include "setting.h"

namespace nuvctl {
namespace {

int ReadNickname(std::string& name) {
  TextBuffer text;
  const int result = API_GetNickName(text.Data());
  name = text.Text();
  return result;
}

Report ShowNickname(const std::string& name) {
  FieldReport report;
  report.AddText("Nickname", "nickname", name);
  return report.Finish();
}

constexpr Setting<std::string> kNickname = {
    "the nickname",
    "Try a shorter one, without special characters.",
    [](const std::string& name) { return API_SetNickName(name.c_str()); },
    ReadNickname,
    Equal<std::string>,
    ShowNickname};

}  // namespace

Action DeclareNickname(CLI::App& app) {
  const auto name = std::make_shared<std::optional<std::string>>();
  app.add_option("NEW", *name, "The new nickname; without it the nickname is shown")->type_name("");
  const Action action = SettingAction(kNickname, name);
  return [name, action](Context& context) {
    if (*name) RequireOneLine(**name, "The nickname");
    return action(context);
  };
}

}  // namespace nuvctl
