// secrets.h: passwords as they are kept, and the block cipher of the client library.
//
// A password is kept as its digest, which suffices to compare it. The passwords of a stand-in guard
// nothing: this keeps them from being read in passing and found by a search for their text, not
// from an attacker. The cipher is DES, because its key and its blocks have 8 bytes.
#ifndef SANDBOX_STORE_SECRETS_H
#define SANDBOX_STORE_SECRETS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace sandbox {

// The SHA-256 of a password, in hexadecimal digits.
std::string digestOf(std::string_view password);

using CipherKey = std::array<std::uint8_t, 8>;

// The key of a text, the same on every host: the first eight bytes of its SHA-256, with odd parity
// in their lowest bits.
CipherKey makeCipherKey(std::string_view text);

// One block of 8 bytes; `in` and `out` may be the same.
void encipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out);
void decipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out);

// The file of a node's generated password, `<directory>/ZYL.<NODE>.pwd`, mode 0600: its digest. It
// is replaced as a whole, so that a reader never sees half of it.
class PasswordFile {
 public:
  // `node` in capitals.
  PasswordFile(const std::string& directory, const std::string& node)
      : directory_(directory.empty() ? "." : directory),
        path_(directory_ + "/ZYL." + node + ".pwd") {}

  // Empty if there is no file.
  std::string readDigest() const;
  // False if it cannot be written; `errno` tells why. Makes the directory's last level.
  bool write(std::string_view password) const;

  const std::string& path() const { return path_; }

 private:
  std::string directory_;
  std::string path_;
};

}  // namespace sandbox

#endif  // SANDBOX_STORE_SECRETS_H
