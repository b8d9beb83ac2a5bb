// SHA-1 of bytes that come piece by piece.
//
// Thread-safety: none.
#ifndef NUVSIM_SHA1_H_
#define NUVSIM_SHA1_H_

#include <memory>
#include <string>
#include <string_view>

namespace nuvsim {

class Sha1 {
 public:
  Sha1();
  ~Sha1();

  void Add(std::string_view bytes);
  // 40 hexadecimal digits, lower case; what follows is a new digest.
  std::string Finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace nuvsim

#endif  // NUVSIM_SHA1_H_
