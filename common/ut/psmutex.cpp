// psmutex.cpp: process mutexes over pthreads. A default mutex that was initialised cannot fail to
// lock or unlock in ways that the caller could mend, so the codes are dropped here.
#include "common/ut/psmutex.h"

#include "common/ut/result.h"

void psMutexInit(psMutex_t* mutex) {
  ut::ignoreResult(pthread_mutex_init(&mutex->mutex, nullptr), "default attributes need no memory");
}

void psMutexLock(psMutex_t* mutex) {
  ut::ignoreResult(pthread_mutex_lock(&mutex->mutex), "cannot fail on an initialised mutex");
}

void psMutexUnlock(psMutex_t* mutex) {
  ut::ignoreResult(pthread_mutex_unlock(&mutex->mutex), "cannot fail on an initialised mutex");
}
