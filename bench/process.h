// Processes to measure against, and what this process takes of the machine.
#ifndef NUV_BENCH_PROCESS_H_
#define NUV_BENCH_PROCESS_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace Bench {

// A program that runs until the object goes, or until this process ends, however it ends.
class Child {
 public:
  // Starts the program and waits until it prints a line "ready"; a program that ends before that
  // ends this one.
  explicit Child(const std::vector<std::string>& program);
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

 private:
  intptr_t process_ = 0;  // the system's name for it
};

// Reads what `program` prints until it is ready. For the constructor of Child.
void WaitUntilReady(std::FILE* printed, const std::string& program);

// The file that this process runs.
std::string OwnProgram();

// Keeps this process, and children started from now on, on one core.
void PinToOneCore();
void Unpin();

// Seconds of processor time that this process took so far. Windows counts in steps of its clock,
// 10 to 16 ms.
double ProcessorSeconds();

// Memory of this process in KiB: now, and the most since ResetPeak. Windows cannot forget an
// earlier peak, so there it is the most since the start.
long ResidentKib();
long PeakKib();
void ResetPeak();

// How many files and sockets this process has open, and how many threads it has.
size_t Handles();
size_t Threads();

}  // namespace Bench

#endif  // NUV_BENCH_PROCESS_H_
