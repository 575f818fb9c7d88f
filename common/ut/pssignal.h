// pssignal.h: signal handlers, for a call or for a scope.
#ifndef COMMON_UT_PSSIGNAL_H
#define COMMON_UT_PSSIGNAL_H

#include <signal.h>

// Installs a handler for `sig` with an empty mask and without restarting system calls: a read that
// the signal interrupts must come back. Returns 0 or -1, as sigaction.
[[nodiscard]] int install_sig_handler(int sig, void (*handler)(int));

namespace ut {

// Replaces a signal's action with a handler until the end of the scope. A signal that is ignored
// (nohup) stays ignored, unless `always`.
class SignalWatch {
 public:
  SignalWatch(int sig, void (*handler)(int), bool always = false);
  ~SignalWatch();
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;

  bool installed() const { return installed_; }

 private:
  int signal_;
  bool installed_ = false;
  struct sigaction saved_ = {};
};

// Holds back every signal that can be held until the end of the scope. Not for several threads.
class SignalsHeld {
 public:
  SignalsHeld();
  ~SignalsHeld();
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t saved_;
};

}  // namespace ut

#endif  // COMMON_UT_PSSIGNAL_H
