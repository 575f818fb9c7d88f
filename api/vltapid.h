// vltapid.h: DVltApiDL, the wrapper that loads the storage client library at run time.
#ifndef API_VLTAPID_H
#define API_VLTAPID_H

#include <string>

#include "api/vltapi.h"

class DVltApiDL : public DVltApi {
 public:
  DVltApiDL();
  DVltApiDL(const char* node, const char* asNode, const char* optFile, DVltPwCallback callback);
  DVltApiDL(const char* node, const char* asNode, const char* optFile, const char* unused,
            DVltPwCallback callback);

  // Loads libApiDS64.so from the run-time linker's search path and resolves all its entry points:
  // all of them, or none. Returns 0, or 104 when the library or one of them is missing. Once
  // loaded, another call does nothing and succeeds.
  int Setup() override;

  // Why the last Setup failed: the linker's words, which name the file, and the missing entry point
  // if it is that. Empty if it succeeded.
  const std::string& whyNotLoaded() const { return whyNotLoaded_; }

  // Unloads the library and sets every pointer to null. Returns 0.
  int Cleanup() override;

 protected:
  static void* m_hMarlDll;  // of dlopen; null while not loaded

 private:
  std::string whyNotLoaded_;
};

#endif  // API_VLTAPID_H
