// psmutex.cpp: process mutexes over pthreads. Locking or unlocking an initialised default mutex
// fails in no way that a caller could handle, so the codes are dropped here.
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
