// secrets.h: passwords as they are kept, and the block cipher of the client library.
//
// The cipher is DES with an 8-byte key, and the databases keep a bare digest of each password. That
// suits a stand-in whose passwords guard nothing: it keeps them from being read in passing and
// found by a search for their text, not from an attacker.
#ifndef SANDBOX_STORE_SECRETS_H
#define SANDBOX_STORE_SECRETS_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

// The form of a password that the databases keep: its SHA-256 in hexadecimal digits.
std::string digestOf(std::string_view password);

using CipherKey = std::array<std::uint8_t, 8>;

// The key of a text: eight bytes of the text's SHA-256, from its start, each with odd parity in its
// lowest bit. If they make a weak key the next eight bytes are taken. The same text gives the same
// key on every host.
CipherKey makeCipherKey(std::string_view text);

// One block of 8 bytes; `in` and `out` may be the same.
void encipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out);
void decipherBlock(const CipherKey& key, const std::uint8_t* in, std::uint8_t* out);

// The file that keeps a node's generated password, `<directory>/ZYL.<NODE>.pwd`, mode 0600:
//
//   offset  size   content
//   0       8      the text "ZYLPWD1\n"
//   8       1      length of the password in bytes, 1 to 64
//   9       8 * n  the password, padded with zero bytes to n blocks and enciphered with cipher
//                  block chaining from a zero block; the key is that of the node's name
//
// It is replaced as a whole, so that a reader never sees half of it.
class PasswordFile {
 public:
  // `node` in capitals.
  PasswordFile(const std::string& directory, const std::string& node);

  // Nothing if there is no file, or none that this class has written for this node.
  std::optional<std::string> read() const;
  // False if it cannot be written; `errno` tells why. Makes the directory's last level.
  bool write(std::string_view password) const;

  const std::string& path() const { return path_; }

 private:
  std::string directory_;
  std::string path_;
  CipherKey key_;
};

}  // namespace sandbox

#endif  // SANDBOX_STORE_SECRETS_H
