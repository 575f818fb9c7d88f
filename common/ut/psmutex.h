// psmutex.h: process mutexes.
#ifndef COMMON_UT_PSMUTEX_H
#define COMMON_UT_PSMUTEX_H

#include <pthread.h>

struct psMutex_t {
  pthread_mutex_t mutex;
};

// Initialises with default attributes. Call it once, before any other use.
void psMutexInit(psMutex_t* mutex);
void psMutexLock(psMutex_t* mutex);
void psMutexUnlock(psMutex_t* mutex);

namespace ut {

// Holds a mutex for the length of a scope.
class MutexGuard {
 public:
  explicit MutexGuard(psMutex_t& mutex) : mutex_(mutex) { psMutexLock(&mutex_); }
  ~MutexGuard() { psMutexUnlock(&mutex_); }
  MutexGuard(const MutexGuard&) = delete;
  MutexGuard& operator=(const MutexGuard&) = delete;

 private:
  psMutex_t& mutex_;
};

}  // namespace ut

#endif  // COMMON_UT_PSMUTEX_H
