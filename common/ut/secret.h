// secret.h: memory that holds a password or a key.
#ifndef COMMON_UT_SECRET_H
#define COMMON_UT_SECRET_H

#include <cstddef>

namespace ut {

// Overwrites the memory with zeros. The compiler drops a plain memset before the end of a
// variable's life; it cannot drop these volatile writes.
inline void wipe(void* memory, std::size_t size) {
  volatile unsigned char* bytes = static_cast<unsigned char*>(memory);
  while (size > 0) bytes[--size] = 0;
}

}  // namespace ut

#endif  // COMMON_UT_SECRET_H
