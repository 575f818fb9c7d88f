// password.cpp: the password file, with a cipher that can be computed here as well.
#include "agent/password.h"

#include <algorithm>
#include <cstdint>

#include "api/vltapid.h"
#include "fuzz/fuzz.h"

namespace {

constexpr std::size_t kHeaderSize = 39, kBlockSize = 8, kChunkSize = 1 + kBlockSize;

// Adds the key to a block, byte by byte, without a carry; doing it twice gives the block again.
void applyKey(const std::uint32_t* key, const std::uint8_t* in, std::uint8_t* out) {
  for (std::size_t i = 0; i < kBlockSize; ++i) {
    out[i] = static_cast<std::uint8_t>(in[i] ^ (key[i / 4] >> i % 4 * 8));
  }
}

struct Library : DVltApiDL {
  Library() { m_fnvltDecryptExP = applyKey; }
};

// The bytes that the whole chunks of a file hold, up to the longest password.
std::string passwordIn(const std::string& file, const std::uint32_t* key) {
  std::string password;
  for (std::size_t at = kHeaderSize; at + kChunkSize <= file.size(); at += kChunkSize) {
    std::uint8_t block[kBlockSize];
    applyKey(key, reinterpret_cast<const std::uint8_t*>(&file[at + 1]), block);
    const int length = std::clamp((file[at] & 255) - '0', 0, static_cast<int>(kBlockSize));
    password.append(block, block + length);
  }
  password.resize(std::min(password.size(), kPasswordSize - 1));
  return password;
}

}  // namespace

void fuzz::check(const std::string& input, char*) {
  static Library library;
  gVltApiObjP = &library;
  unsigned key[] = {0x01020304, 0x50607080};
  const std::string expected = passwordIn(input, key);
  std::vector<char> password(kPasswordSize);  // on the heap, where its bounds are watched
  hold(psvexoReadPswdFromFile(plainFile(input), password.data(), key) == 0, "a file is read");
  hold(std::memcmp(password.data(), expected.c_str(), expected.size() + 1) == 0, "all are read");
}
