#ifndef NUV_PRINTER_HOST_CALL_H_
#define NUV_PRINTER_HOST_CALL_H_

namespace Nuv::Printer {

// Marks this thread while it runs a function of the host, which may free anything but must not wait
// for itself.
class HostCall {
 public:
  HostCall() { ++Depth(); }
  ~HostCall() { --Depth(); }
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;

  static bool UnderWay() { return Depth() > 0; }

 private:
  static int& Depth() {
    thread_local int depth = 0;
    return depth;
  }
};

}  // namespace Nuv::Printer

#endif  // NUV_PRINTER_HOST_CALL_H_
