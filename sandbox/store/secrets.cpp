// secrets.cpp: passwords as they are kept, and the block cipher of the client library.
#include "sandbox/store/secrets.h"

#include <nettle/base16.h>
#include <nettle/cbc.h>
#include <nettle/des.h>
#include <nettle/sha2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

namespace sandbox {
namespace {

constexpr std::string_view kFileHeader = "ZYLPWD1\n";
constexpr std::size_t kBlock = DES_BLOCK_SIZE;

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

void encipherBlocks(const void* cipher, std::size_t size, std::uint8_t* out,
                    const std::uint8_t* in) {
  des_encrypt(static_cast<const des_ctx*>(cipher), size, out, in);
}

void decipherBlocks(const void* cipher, std::size_t size, std::uint8_t* out,
                    const std::uint8_t* in) {
  des_decrypt(static_cast<const des_ctx*>(cipher), size, out, in);
}

// Runs cipher block chaining in either direction over a text of whole blocks.
template <typename Chain>
std::string chained(Chain* chain, nettle_cipher_func* each, const CipherKey& key,
                    std::string_view text) {
  const des_ctx cipher = cipherOf(key);
  std::uint8_t start[kBlock] = {};
  std::string result(text.size(), '\0');
  chain(&cipher, each, kBlock, start, text.size(), reinterpret_cast<std::uint8_t*>(result.data()),
        bytesOf(text));
  return result;
}

}  // namespace

std::string digestOf(std::string_view password) {
  const Digest digest = sha256Of(password);
  std::string digits(BASE16_ENCODE_LENGTH(digest.size()), '\0');
  base16_encode_update(digits.data(), digest.size(), digest.data());
  return digits;
}

CipherKey makeCipherKey(std::string_view text) {
  const Digest digest = sha256Of(text);
  CipherKey key;
  for (std::size_t at = 0; at < digest.size(); at += key.size()) {
    des_fix_parity(key.size(), key.data(), digest.data() + at);
    des_ctx cipher;
    if (des_set_key(&cipher, key.data()) == 1) break;
  }
  return key;
}

void encipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out) {
  const des_ctx cipher = cipherOf(key);
  des_encrypt(&cipher, kBlock, out, in);
}

void decipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out) {
  const des_ctx cipher = cipherOf(key);
  des_decrypt(&cipher, kBlock, out, in);
}

PasswordFile::PasswordFile(const std::string& directory, const std::string& node)
    : directory_(directory.empty() ? "." : directory),
      path_(directory_ + "/ZYL." + node + ".pwd"),
      key_(makeCipherKey(node)) {}

std::optional<std::string> PasswordFile::read() const {
  std::ifstream file(path_, std::ios::binary);
  const std::string content((std::istreambuf_iterator<char>(file)), {});
  const std::size_t start = kFileHeader.size() + 1;
  if (!content.starts_with(kFileHeader) || content.size() <= start) return std::nullopt;
  const std::string_view blocks = std::string_view(content).substr(start);
  const auto length = static_cast<unsigned char>(content[kFileHeader.size()]);
  if (blocks.size() % kBlock != 0 || length == 0 || length > blocks.size()) return std::nullopt;
  return chained(cbc_decrypt, decipherBlocks, key_, blocks).substr(0, length);
}

bool PasswordFile::write(std::string_view password) const {
  std::string padded(password);
  padded.resize((password.size() + kBlock - 1) / kBlock * kBlock, '\0');
  std::string content(kFileHeader);
  content += static_cast<char>(password.size());
  content += chained(cbc_encrypt, encipherBlocks, key_, padded);

  mkdir(directory_.c_str(), 0700);  // ignore: if it is missing afterwards, mkstemp says so
  std::string temporary = path_ + ".XXXXXX";
  const int file = mkstemp(temporary.data());  // mkstemp makes the file with mode 0600
  if (file < 0) return false;
  const bool written =
      std::cmp_equal(::write(file, content.data(), content.size()), content.size());
  const bool closed = close(file) == 0;
  if (written && closed && std::rename(temporary.c_str(), path_.c_str()) == 0) return true;
  std::remove(temporary.c_str());
  return false;
}

}  // namespace sandbox
