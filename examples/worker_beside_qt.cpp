// A worker thread beside a Qt event loop: the loop never waits for a printer, the worker never
// touches what the loop owns. Without windows; with them nothing changes.
// Usage: worker_beside_qt ADDRESS
#include <QCoreApplication>
#include <QThread>
#include <atomic>
#include <functional>
#include <iostream>
#include <string>
#include <utility>

#include "nuvprinter/nuvprinter.hpp"

namespace {

// One printer on a thread of its own. Its answers come back on the thread of the Worker's owner.
class Worker : public QObject {
 public:
  explicit Worker(std::string address) : address_(std::move(address)) {
    call_.stillWanted = [this] { return wanted_.load(); };
    context_.moveToThread(&thread_);
    thread_.start();
  }
  // Ends what is under way, what waits, and then the thread, within 0.6 s.
  ~Worker() override {
    wanted_ = false;
    thread_.quit();
    thread_.wait();
  }

  void AskState(std::function<void(const nuv::State&)> done,
                std::function<void(const nuv::Error&)> failed) {
    QMetaObject::invokeMethod(
        &context_, [this, done = std::move(done), failed = std::move(failed)] {
          try {
            const nuv::State state = Opened().GetState(call_);
            QMetaObject::invokeMethod(this, [done, state] { done(state); });
          } catch (const nuv::Error& error) {
            QMetaObject::invokeMethod(this, [failed, error] { failed(error); });
          }
        });
  }

 private:
  // At the first question that gets through.
  nuv::Printer& Opened() {
    if (!printer_.Handle()) printer_ = nuv::Printer::OpenAddress(address_, call_);
    return printer_;
  }

  const std::string address_;
  std::atomic<bool> wanted_{true};
  nuv::Call call_;
  nuv::Printer printer_;  // of the worker's thread
  QObject context_;       // likewise
  QThread thread_;
};

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication app(argc, argv);
  if (argc != 2) {
    std::cerr << "usage: worker_beside_qt ADDRESS\n";
    return 2;
  }
  Worker worker(argv[1]);
  worker.AskState(
      [&](const nuv::State& state) {
        std::cout << (state.state == nuv::PrinterState::kIdle ? "idle" : "not idle") << std::endl;
        QCoreApplication::exit(0);
      },
      [&](const nuv::Error& error) {
        std::cerr << "worker_beside_qt: " << error.what() << '\n';
        QCoreApplication::exit(1);
      });
  return QCoreApplication::exec();
}
