#ifndef NUV_JOB_NUV_FILE_LIBRARY_H_
#define NUV_JOB_NUV_FILE_LIBRARY_H_

#include <QLibrary>

#include "job/print_file_library.h"

namespace Nuv::Connect {

// Adapter to the library NuvFile, bound by name at run time. The environment variable
// NUVFILE_LIBRARY names its file; without it the folder of this library is searched, then the
// system's library path.
class NuvFileLibrary final : public IPrintFileLibrary {
 public:
  bool LoadLibrary() override;
  bool Load(const std::string& path) override;
  void Close() override;
  std::string LastError() const override;
  std::string GetMachineID() override;
  std::string GetProjectID() override;
  std::string GetMaterialID() override;
  std::string GetFileArguments() override;
  int GetModelDataSize() override;
  bool ReadLayer(int index, std::vector<uint8_t>& line) override;
  bool GetAESkey(std::vector<uint8_t>& bytes) override;
  bool ReadPreImg(std::vector<uint8_t>& bytes) override;
  bool ReadL101(std::vector<uint8_t>& bytes) override;
  bool ReadL102(std::vector<uint8_t>& bytes) override;
  bool ReadL103(std::vector<uint8_t>& bytes) override;

 private:
  using TextFunction = int (*)(char* out, int capacity);
  using BytesFunction = int (*)(unsigned char* buffer, int capacity);

  // The library's functions, under its names.
  struct Functions {
    int (*Load)(const char* path) = nullptr;
    void (*Close)() = nullptr;
    TextFunction GetMachineID = nullptr;
    TextFunction GetProjectID = nullptr;
    TextFunction GetMaterialID = nullptr;
    TextFunction GetFileArguments = nullptr;
    int (*GetModelDataSize)() = nullptr;
    int (*ReadLayer)(int index, unsigned char* buffer, int capacity, float reserved) = nullptr;
    BytesFunction GetAESkey = nullptr;
    BytesFunction ReadPreImg = nullptr;
    BytesFunction ReadL101 = nullptr;
    BytesFunction ReadL102 = nullptr;
    BytesFunction ReadL103 = nullptr;
    TextFunction GetLastErrorText = nullptr;  // may be missing
  };

  bool LoadFrom(const QString& file);
  template <class Function>
  bool Resolve(const char* name, Function& function);
  static std::string Text(TextFunction function);
  bool Bytes(BytesFunction function, const char* part, std::vector<uint8_t>& bytes) const;

  QLibrary library_;
  Functions functions_;
  bool loaded_ = false;
};

}  // namespace Nuv::Connect

#endif  // NUV_JOB_NUV_FILE_LIBRARY_H_
