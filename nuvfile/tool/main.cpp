#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

#include "commands.h"

namespace NuvFile::Tool {
namespace {

constexpr const char* kExitCodes =
    "Exit codes: 0 done, 1 file damaged or content refused, 2 wrong command line,\n"
    "3 a file could not be opened, read or written.";

constexpr const char* kCreateExamples =
    "Examples:\n"
    "  nuvfile create --machine-id 3DPSNKG23WTW00001 layers.txt part.nuv\n"
    "  nuvfile create --machine-id 3DPSNKG43WTW00001 --preview part.png \\\n"
    "    --argument job_name=crown --argument layer_thickness_mm=0.05 layers.txt part.nuv\n"
    "  slicer | nuvfile create --machine-id 3DPSNKG23WTW00001 - part.nuv\n";

void AddCreate(CLI::App& app, CreateOptions& options, int& result) {
  CLI::App* create = app.add_subcommand("create", "Make a print file from a text of data lines");
  create
      ->add_option("lines", options.linesPath,
                   "Data lines, one per line (LF or CR LF); - for standard input")
      ->required();
  create->add_option("out", options.outPath, "Print file to write")->required();
  create
      ->add_option(
          "--machine-id", options.machineId,
          "Machine the job is for, 17 characters; docs/protocol.md has those of the models")
      ->required();
  create->add_option("--project-id", options.projectId, "Project ID");
  create->add_option("--material-id", options.materialId, "Material ID");
  create->add_option("--argument", options.arguments, "Job argument name=value; may be repeated")
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  create->add_option("--key-file", options.keyPath, "File with the key bytes");
  create->add_option("--l101", options.l101Path, "File with the payload of header record L101");
  create->add_option("--l102", options.l102Path, "File with the payload of header record L102");
  create->add_option("--l103", options.l103Path, "File with the payload of header record L103");
  create->add_option("--preview", options.previewPath, "Preview picture (PNG)");
  create->footer(std::string(kCreateExamples) + "\n" + kExitCodes);
  create->callback([&] { result = RunCreate(options); });
}

using RunOnFile = int (*)(const std::string& path, bool json);

struct FileOptions {
  std::string path;
  bool json = false;
};

void AddFileCommand(CLI::App& app, const std::string& name, const std::string& description,
                    RunOnFile run, FileOptions& options, int& result) {
  CLI::App* command = app.add_subcommand(name, description);
  command->add_option("file", options.path, "Print file")->required();
  command->add_flag("--json", options.json, "Write the result as JSON to standard output");
  command->footer("Examples:\n  nuvfile " + name + " part.nuv\n  nuvfile " + name +
                  " --json part.nuv\n\n" + kExitCodes);
  command->callback([&options, &result, run] { result = run(options.path, options.json); });
}

int Main(int argc, char** argv) {
  CLI::App app("Makes, shows and verifies print files.", "nuvfile");
  app.allow_windows_style_options(false);  // a path may begin with a slash there too
  app.require_subcommand(1);
  app.footer(std::string(kCreateExamples) +
             "  nuvfile info part.nuv\n  nuvfile verify --json part.nuv\n\n" + kExitCodes);
  int result = kExitOk;
  CreateOptions create;
  FileOptions info;
  FileOptions verify;
  AddCreate(app, create, result);
  AddFileCommand(app, "info", "Show what a print file holds", RunInfo, info, result);
  AddFileCommand(app, "verify", "Check every byte of a print file", RunVerify, verify, result);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? kExitOk : kExitUsage;
  }
  return result;
}

}  // namespace
}  // namespace NuvFile::Tool

int main(int argc, char** argv) {
  try {
    return NuvFile::Tool::Main(argc, argv);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "nuvfile: %s\n", e.what());
    return NuvFile::Tool::kExitIo;
  }
}
