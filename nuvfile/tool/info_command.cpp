#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "nuvfile/print_file.h"

namespace nuvfile::tool {
namespace {

using Json = nlohmann::ordered_json;

void PrintJson(const Json& json) {
  // Paths and texts need not be valid UTF-8; JSON must be.
  std::puts(json.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

std::string Advice(Fault fault) {
  switch (fault) {
    case Fault::kCannotOpen:
      return "Check the path and that you may read the file.";
    case Fault::kReadFailed:
      return "Check the disk or network drive, then try again.";
    case Fault::kNotPrintFile:
      return "Check the path; make print files with 'nuvfile create'.";
    case Fault::kUnknownVersion:
      return "Install a newer version of this program.";
    case Fault::kBadLine:
    case Fault::kTooLarge:
    case Fault::kBadText:
      return "Do not print it; slice the job again.";
    default:
      return "Do not print it; copy the file again from its origin, or slice it again.";
  }
}

int ReportFault(const std::string& path, const Status& status, bool json) {
  if (json) {
    PrintJson({{"file", path},
               {"ok", false},
               {"fault", FaultName(status.fault())},
               {"message", status.message()},
               {"advice", Advice(status.fault())}});
  } else {
    PrintFault(path, status.message(), Advice(status.fault()));
  }
  return ExitCodeFor(status.fault());
}

// The sections that are shown by their length only. The key's bytes are never shown:
// what is printed here ends up in logs and support mails.
constexpr struct {
  const char* name;
  Section section;
} kBinarySections[] = {
    {"key_bytes", Section::kAesKey},      {"l101_bytes", Section::kL101},
    {"l102_bytes", Section::kL102},       {"l103_bytes", Section::kL103},
    {"preview_bytes", Section::kPreview},
};

Json InfoJson(const std::string& path, const PrintFile& file) {
  Json json = {{"file", path},
               {"ok", true},
               {"machine_id", file.machine_id()},
               {"project_id", file.project_id()},
               {"material_id", file.material_id()},
               {"data_lines", file.line_count()},
               {"model_bytes", file.model_bytes()},
               {"file_bytes", file.file_bytes()}};
  for (const auto& row : kBinarySections) json[row.name] = file.SectionLength(row.section);
  Json& arguments = json["arguments"] = Json::object();
  for (const Argument& argument : file.arguments()) arguments[argument.name] = argument.value;
  return json;
}

void PrintInfo(const Json& info) {
  for (const auto& [name, value] : info.items()) {
    if (name == "ok" || name == "arguments") continue;
    const std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    std::printf("%-15s %s\n", name.c_str(), text.c_str());
  }
  for (const auto& [name, value] : info["arguments"].items()) {
    std::printf("%-15s %s=%s\n", "argument", name.c_str(), value.get<std::string>().c_str());
  }
}

}  // namespace

ExitCode ExitCodeFor(Fault fault) {
  switch (fault) {
    case Fault::kNone:
      return kExitOk;
    case Fault::kCannotOpen:
    case Fault::kReadFailed:
    case Fault::kOutOfMemory:
    case Fault::kWriteFailed:
      return kExitIo;
    default:
      return kExitRefused;
  }
}

void PrintFault(const std::string& subject, const std::string& message, const std::string& advice) {
  std::fprintf(stderr, "nuvfile: %s: %s\n", subject.c_str(), message.c_str());
  if (!advice.empty()) std::fprintf(stderr, "%s\n", advice.c_str());
}

int RunInfo(const std::string& path, bool json) {
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(path, &file);
  if (!status.ok()) return ReportFault(path, status, json);
  const Json info = InfoJson(path, *file);
  if (json) {
    PrintJson(info);
  } else {
    PrintInfo(info);
  }
  return kExitOk;
}

int RunVerify(const std::string& path, bool json) {
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(path, &file);
  if (!status.ok()) return ReportFault(path, status, json);
  if (json) {
    PrintJson({{"file", path}, {"ok", true}, {"data_lines", file->line_count()}});
  } else {
    std::printf("%s: ok, %llu data lines\n", path.c_str(),
                static_cast<unsigned long long>(file->line_count()));
  }
  return kExitOk;
}

}  // namespace nuvfile::tool
