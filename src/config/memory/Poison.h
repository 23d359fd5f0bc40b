// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_POISON_H
#define ZELCONFUTILS_MEMORY_POISON_H

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define ZELCONFUTILS_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZELCONFUTILS_POISON 1
#endif
#endif

#ifdef ZELCONFUTILS_POISON
#include <cstdlib>

// Of the compiler's own interface, whose header is no standard one.
extern "C" {
void __asan_poison_memory_region(const volatile void*, std::size_t);
void __asan_unpoison_memory_region(const volatile void*, std::size_t);
int __asan_address_is_poisoned(const volatile void*);
}
#endif

/// Tells the address sanitizer which bytes of a slab are lent, as it knows only of the slab as a
/// whole: whoever leaves a block, or uses one that was given back, is then caught. Without that
/// sanitizer nothing is done.
namespace Configuration::Poison {

#ifdef ZELCONFUTILS_POISON

/// Left between two blocks. Blocks start and end at multiples of this: the sanitizer can tell no
/// smaller pieces apart.
constexpr std::size_t kGapBytes = 8;

/// Nobody may touch these bytes.
inline void Forbid(const void* bytes, std::size_t count) {
  __asan_poison_memory_region(bytes, count);
}

inline bool IsForbidden(const void* byte) { return __asan_address_is_poisoned(byte) != 0; }

/// The whole block may be touched. It must have been forbidden, with the gap after it: otherwise it
/// overlaps another one.
inline void Permit(char* block, std::size_t count) {
  for (std::size_t i = 0; i <= count; ++i) {
    if (!IsForbidden(block + i)) std::abort();
  }
  __asan_unpoison_memory_region(block, count);
}

#else

constexpr std::size_t kGapBytes = 0;
inline void Forbid(const void*, std::size_t) {}
inline bool IsForbidden(const void*) { return false; }
inline void Permit(char*, std::size_t) {}

#endif

}  // namespace Configuration::Poison

#endif
