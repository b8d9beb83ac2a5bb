#ifndef NUV_TESTS_CHANNEL_STUB_H_
#define NUV_TESTS_CHANNEL_STUB_H_

#include <string>
#include <vector>

#include "command/i_channel.h"

// A channel of which commands and jobs use the few operations that it leaves open.
class ChannelStub : public Nuv::Connect::IChannel {
 public:
  Nuv::Connect::Reason Reopen() override { return {}; }
  Nuv::Connect::Reason Send(const std::vector<uint8_t>&) override { return {}; }
  bool SearchDevices(std::vector<std::string>&, std::string, std::string, int) override {
    return false;
  }
  bool EnumerateDevices(int, std::vector<std::string>&) override { return false; }
  bool ReadLocalData(std::vector<uint8_t>&) override { return false; }
  bool ChooseDevice(int, int) override { return false; }
  bool CloseDevice() override { return true; }
  void SetLocalOption(int) override {}
  void SetSearchTimeout(int) override {}
  void SetSearchPort(int) override {}
  void SetSearchMessage(std::string) override {}
  Nuv::Connect::LinkLook Look() override { return {true, false}; }
  void BeginJob(Nuv::Connect::JobKind, Nuv::Platform::Interrupt*) override {}
  void EndJob(bool) override {}
};

#endif  // NUV_TESTS_CHANNEL_STUB_H_
