// loader.cpp: loads the client library twice and unloads it; prints each code with the number of
// entry points that can be called behind it.
#include <algorithm>
#include <cstdio>

#include "api/vltapid.h"

namespace {

struct Loader : DVltApiDL {
  static void report(int rc) {
    const bool set[] = {
#define VLT_CODE(op, args, ...) m_fnvlt##op##P != nullptr,
#define VLT_VOID(op, args, ...) m_fnvlt##op##P != nullptr,
#include "api/vltentries.def"
    };
    std::printf("%d:%d%s ", rc, static_cast<int>(std::count(std::begin(set), std::end(set), true)),
                m_hMarlDll == nullptr ? "" : "+");
  }
};

}  // namespace

int main() {
  Loader api, another;
  Loader::report(api.Setup());
  Loader::report(another.Setup());
  Loader::report(api.Cleanup());
}
