// password.cpp: the password file, under a cipher that anybody can undo.
#include "agent/password.h"

#include "api/vltapid.h"
#include "fuzz/fuzz.h"

static void turn(const uint32_t* key, const uint8_t* in, uint8_t* out) {
  for (int i = 0; i < 8; ++i) out[i] = static_cast<uint8_t>(in[i] ^ (key[i / 4] >> i % 4 * 8));
}

struct Api : DVltApiDL {
  Api() { m_fnvltDecryptExP = turn; }
};

void fuzz::check(const std::string& input, char*) {
  static Api api;
  gVltApiObjP = &api;
  unsigned key[] = {0x01020304, 0x50607080};
  std::string expected;
  for (std::size_t at = 39; at + 9 <= input.size(); at += 9) {
    uint8_t block[8];
    turn(key, reinterpret_cast<const uint8_t*>(&input[at + 1]), block);
    expected.append(block, block + std::clamp((input[at] & 255) - '0', 0, 8));
  }
  expected.resize(std::min(expected.size(), kPasswordSize - 1));
  std::vector<char> password(kPasswordSize);
  hold(psvexoReadPswdFromFile(plainFile(input), password.data(), key) == 0, "a file is read");
  hold(!std::memcmp(password.data(), expected.c_str(), expected.size() + 1), "all chunks are read");
}
