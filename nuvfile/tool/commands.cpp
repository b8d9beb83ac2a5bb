#include "commands.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <nlohmann/json.hpp>

#include "nuvfile/byte_source.h"
#include "nuvfile/print_file.h"
#include "nuvfile/print_file_writer.h"
#include "nuvfile/text_lines.h"

namespace NuvFile::Tool {
namespace {

using Json = nlohmann::ordered_json;

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

// Prints "nuvfile: <subject>: <message>" and, when there is one, a line of advice.
void PrintFault(const std::string& subject, const std::string& message, const std::string& advice) {
  std::fprintf(stderr, "nuvfile: %s: %s\n", subject.c_str(), message.c_str());
  if (!advice.empty()) std::fprintf(stderr, "%s\n", advice.c_str());
}

int UsageFault(const std::string& subject, const std::string& message) {
  PrintFault(subject, message, "Run 'nuvfile create --help' for the options.");
  return kExitUsage;
}

bool IsPng(const std::vector<uint8_t>& bytes) {
  constexpr uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  return bytes.size() >= sizeof(kSignature) &&
         std::memcmp(bytes.data(), kSignature, sizeof(kSignature)) == 0;
}

// Splits at the first '=': values may hold more of them. False without any.
bool SplitArguments(const std::vector<std::string>& given, std::vector<Argument>* arguments) {
  for (const std::string& text : given) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos) {
      UsageFault("--argument " + text, "expected name=value");
      return false;
    }
    arguments->push_back({text.substr(0, equals), text.substr(equals + 1)});
  }
  return true;
}

// Reads the files named by the options into `contents`. Returns an exit code.
int ReadRecords(const CreateOptions& options, PrintFileContents* contents) {
  const struct {
    const char* option;
    const std::string& path;
    uint64_t maxLength;
    std::vector<uint8_t>* bytes;
  } kRows[] = {
      {"--key-file", options.keyPath, kMaxKeyLength, &contents->aesKey},
      {"--l101", options.l101Path, kMaxRecordLength - kRecordFrameLength, &contents->l101},
      {"--l102", options.l102Path, kMaxRecordLength - kRecordFrameLength, &contents->l102},
      {"--l103", options.l103Path, kMaxRecordLength - kRecordFrameLength, &contents->l103},
      {"--preview", options.previewPath, kMaxPreviewLength, &contents->preview},
  };
  for (const auto& row : kRows) {
    if (row.path.empty()) continue;
    const Status status = ReadWholeFile(row.path, row.maxLength, row.bytes);
    if (status.Ok()) continue;
    PrintFault(row.option, status.Message(), "Check the file named by this option.");
    return ExitCodeFor(status.GetFault());
  }
  if (!options.l101Path.empty()) contents->l101 = FrameRecord("L101", contents->l101);
  if (!options.l102Path.empty()) contents->l102 = FrameRecord("L102", contents->l102);
  if (!options.l103Path.empty()) contents->l103 = FrameRecord("L103", contents->l103);
  if (!options.previewPath.empty() && !IsPng(contents->preview)) {
    PrintFault("--preview", "'" + options.previewPath + "' is not a PNG picture",
               "Save the preview as PNG and try again.");
    return kExitRefused;
  }
  return kExitOk;
}

std::string CreateAdvice(Fault fault) {
  switch (fault) {
    case Fault::kBadText:
      return "Run 'nuvfile create --help' for the options.";
    case Fault::kBadLine:
      return "Correct or remove that line of the text and try again.";
    case Fault::kTooLarge:
      return "Split the job, or check that the text is what you meant.";
    case Fault::kWriteFailed:
      return "Check the free space of the disk and try again.";
    case Fault::kCannotOpen:
      return "Check the path and that its folder may be written to.";
    default:
      return "";
  }
}

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
               {"fault", FaultName(status.GetFault())},
               {"message", status.Message()},
               {"advice", Advice(status.GetFault())}});
  } else {
    PrintFault(path, status.Message(), Advice(status.GetFault()));
  }
  return ExitCodeFor(status.GetFault());
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
               {"machine_id", file.MachineId()},
               {"project_id", file.ProjectId()},
               {"material_id", file.MaterialId()},
               {"data_lines", file.LineCount()},
               {"model_bytes", file.ModelBytes()},
               {"file_bytes", file.FileBytes()}};
  for (const auto& row : kBinarySections) json[row.name] = file.SectionLength(row.section);
  Json& arguments = json["arguments"] = Json::object();
  for (const Argument& argument : file.Arguments()) arguments[argument.name] = argument.value;
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

int RunCreate(const CreateOptions& options) {
  if (options.linesPath == options.outPath) {
    return UsageFault(options.outPath, "the data lines and the print file are the same file");
  }
  PrintFileContents contents;
  contents.machineId = options.machineId;
  contents.projectId = options.projectId;
  contents.materialId = options.materialId;
  if (!SplitArguments(options.arguments, &contents.arguments)) return kExitUsage;
  if (const int code = ReadRecords(options, &contents); code != kExitOk) return code;
  std::unique_ptr<TextLines> lines;
  if (const Status status = TextLines::Open(options.linesPath, &lines); !status.Ok()) {
    PrintFault("data lines", status.Message(), "Check the path.");
    return ExitCodeFor(status.GetFault());
  }
  WriteSummary summary;
  const Status status = WritePrintFile(
      options.outPath, contents,
      [&](std::string_view* line, Status* error) { return lines->Next(line, error); }, &summary);
  if (!status.Ok()) {
    PrintFault(options.outPath + " not written", status.Message(), CreateAdvice(status.GetFault()));
    // The texts come from the command line.
    return status.GetFault() == Fault::kBadText ? kExitUsage : ExitCodeFor(status.GetFault());
  }
  std::printf("%s: %llu data lines, %llu bytes of model data, %llu bytes\n",
              options.outPath.c_str(), static_cast<unsigned long long>(summary.lineCount),
              static_cast<unsigned long long>(summary.modelBytes),
              static_cast<unsigned long long>(summary.fileBytes));
  return kExitOk;
}

int RunInfo(const std::string& path, bool json) {
  std::unique_ptr<PrintFile> file;
  const Status status = PrintFile::Open(path, &file);
  if (!status.Ok()) return ReportFault(path, status, json);
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
  if (!status.Ok()) return ReportFault(path, status, json);
  if (json) {
    PrintJson({{"file", path}, {"ok", true}, {"data_lines", file->LineCount()}});
  } else {
    std::printf("%s: ok, %llu data lines\n", path.c_str(),
                static_cast<unsigned long long>(file->LineCount()));
  }
  return kExitOk;
}

}  // namespace NuvFile::Tool
