// password.cpp: the password file.
#include "agent/password.h"

#include <algorithm>
#include <cstdint>

#include "api/vltapid.h"
#include "fuzz/fuzz.h"

void fuzz::check(const std::string& input, char*) {
  static struct Library : DVltApiDL {
    Library() {
      m_fnvltDecryptExP = [](const std::uint32_t*, const std::uint8_t* in, std::uint8_t* out) {
        std::copy(in, in + 8, out);
      };
    }
  } library;
  gVltApiObjP = &library;
  unsigned key[2] = {};
  std::vector<char> password(kPasswordSize, '?');  // on the heap, where its bounds are watched
  hold(psvexoReadPswdFromFile(plainFile(input), password.data(), key) == 0, "a file is read");
  hold(std::ranges::count(password, '\0') > 0, "a password has an end");
}
