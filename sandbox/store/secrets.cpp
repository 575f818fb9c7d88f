// secrets.cpp: passwords as they are kept, and the block cipher of the client library.
#include "sandbox/store/secrets.h"

#include <nettle/base16.h>
#include <nettle/des.h>
#include <nettle/sha2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace sandbox {
namespace {

const std::uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

using Digest = std::array<std::uint8_t, SHA256_DIGEST_SIZE>;

Digest sha256Of(std::string_view text) {
  sha256_ctx context;
  Digest digest;
  sha256_init(&context);
  sha256_update(&context, text.size(), bytesOf(text));
  sha256_digest(&context, digest.size(), digest.data());
  return digest;
}

des_ctx cipherOf(const CipherKey& key) {
  des_ctx cipher;
  des_set_key(&cipher, key.data());  // ignore: a caller's weak key works as well
  return cipher;
}

}  // namespace

std::string digestOf(std::string_view password) {
  const Digest digest = sha256Of(password);
  std::string digits(BASE16_ENCODE_LENGTH(digest.size()), '\0');
  base16_encode_update(digits.data(), digest.size(), digest.data());
  return digits;
}

CipherKey makeCipherKey(std::string_view text) {
  CipherKey key;
  des_fix_parity(key.size(), key.data(), sha256Of(text).data());
  return key;
}

void encipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out) {
  const des_ctx cipher = cipherOf(key);
  des_encrypt(&cipher, DES_BLOCK_SIZE, out, in);
}

void decipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out) {
  const des_ctx cipher = cipherOf(key);
  des_decrypt(&cipher, DES_BLOCK_SIZE, out, in);
}

std::string PasswordFile::readDigest() const {
  std::ifstream file(path_);
  std::string digest;
  file >> digest;
  return digest;
}

bool PasswordFile::write(std::string_view password) const {
  const std::string line = digestOf(password) + "\n";
  mkdir(directory_.c_str(), 0700);  // ignore: if it is missing afterwards, mkstemp says so
  std::string temporary = path_ + ".XXXXXX";
  const int file = mkstemp(temporary.data());  // mkstemp makes the file with mode 0600
  if (file < 0) return false;
  const bool written = std::cmp_equal(::write(file, line.data(), line.size()), line.size());
  const bool closed = close(file) == 0;
  if (written && closed && std::rename(temporary.c_str(), path_.c_str()) == 0) return true;
  std::remove(temporary.c_str());
  return false;
}

}  // namespace sandbox
