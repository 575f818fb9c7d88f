// cipher.cpp: entry points of the block cipher and its key.
//
// They return nothing and need no set-up; a null pointer makes them do nothing.
#include <cstring>

#include "sandbox/library/checks.h"
#include "sandbox/store/secrets.h"

namespace {

sandbox::CipherKey keyOf(const std::uint32_t words[2]) {
  sandbox::CipherKey key;
  std::memcpy(key.data(), words, key.size());
  return key;
}

}  // namespace

void vltCreateDesKeyEx(const char* text, std::uint32_t key[2]) {
  if (text == nullptr || key == nullptr) return;
  const sandbox::CipherKey made = sandbox::makeCipherKey(text);
  std::memcpy(key, made.data(), made.size());
}

void vltEncryptEx(const std::uint32_t key[2], const std::uint8_t in[8], std::uint8_t out[8]) {
  if (key == nullptr || in == nullptr || out == nullptr) return;
  sandbox::encipherBlock(keyOf(key), in, out);
}

void vltDecryptEx(const std::uint32_t key[2], const std::uint8_t in[8], std::uint8_t out[8]) {
  if (key == nullptr || in == nullptr || out == nullptr) return;
  sandbox::decipherBlock(keyOf(key), in, out);
}
