#include "nuvsim/sha1.h"

#include <openssl/evp.h>

namespace nuvsim {

struct Sha1::State {
  std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context{EVP_MD_CTX_new(), EVP_MD_CTX_free};
};

Sha1::Sha1() : state_(std::make_unique<State>()) {
  EVP_DigestInit_ex(state_->context.get(), EVP_sha1(), nullptr);
}

Sha1::~Sha1() = default;

void Sha1::Add(std::string_view bytes) {
  EVP_DigestUpdate(state_->context.get(), bytes.data(), bytes.size());
}

std::string Sha1::Finish() {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int length = 0;
  EVP_DigestFinal_ex(state_->context.get(), digest, &length);
  EVP_DigestInit_ex(state_->context.get(), EVP_sha1(), nullptr);
  std::string digits;
  for (unsigned int i = 0; i < length; ++i) {
    constexpr char kDigits[] = "0123456789abcdef";
    digits += kDigits[digest[i] >> 4];
    digits += kDigits[digest[i] & 15];
  }
  return digits;
}

}  // namespace nuvsim
