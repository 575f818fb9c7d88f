// pssignal.cpp: signal handlers, see pssignal.h.
#include "common/ut/pssignal.h"

#include "common/ut/result.h"

int install_sig_handler(int sig, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  ::sigemptyset(&action.sa_mask);
  action.sa_flags = SA_NOCLDSTOP;
  return ::sigaction(sig, &action, nullptr);
}

ut::SignalWatch::SignalWatch(int sig, void (*handler)(int), bool always) : signal_(sig) {
  if (::sigaction(sig, nullptr, &saved_) != 0) return;
  if (!always && saved_.sa_handler == SIG_IGN) return;
  installed_ = install_sig_handler(sig, handler) == 0;
}

ut::SignalWatch::~SignalWatch() {
  if (!installed_) return;
  ignoreResult(::sigaction(signal_, &saved_, nullptr), "the action was valid before");
}

ut::SignalsHeld::SignalsHeld() {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_SETMASK, &all, &saved_);
}

ut::SignalsHeld::~SignalsHeld() { sigprocmask(SIG_SETMASK, &saved_, nullptr); }
