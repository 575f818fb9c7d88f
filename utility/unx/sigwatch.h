// sigwatch.h: a signal handler for a scope.
#ifndef UTILITY_UNX_SIGWATCH_H
#define UTILITY_UNX_SIGWATCH_H

#include <signal.h>

#include "common/ut/result.h"
#include "utility/unx/psutpswd.h"

namespace utility {

// Has a handler stand in for a signal's action until the end of the scope. A signal that is ignored
// (nohup) stays ignored, unless `always`.
class SignalWatch {
 public:
  SignalWatch(int sig, void (*handler)(int), bool always = false) : signal_(sig) {
    if (::sigaction(sig, nullptr, &saved_) != 0) return;
    if (!always && saved_.sa_handler == SIG_IGN) return;
    installed_ = install_sig_handler(sig, handler) == 0;
  }
  ~SignalWatch() {
    if (!installed_) return;
    ut::ignoreResult(::sigaction(signal_, &saved_, nullptr), "the action was valid before");
  }
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  bool installed() const { return installed_; }

 private:
  int signal_;
  bool installed_ = false;
  struct sigaction saved_ = {};
};

}  // namespace utility

#endif  // UTILITY_UNX_SIGWATCH_H
