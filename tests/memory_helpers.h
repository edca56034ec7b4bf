#pragma once

/// Lets memory run out. Replaces the global operators, so that one source of a program includes it.

#include <cstdlib>
#include <limits>
#include <new>

/// Any single allocation above the limit fails.
inline std::size_t largestRequest = std::numeric_limits<std::size_t>::max();
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* memory = size > largestRequest ? nullptr : std::malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return size > largestRequest ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
// A sanitizer's own forms for arrays wouldn't call these.
[[gnu::noinline]] void* operator new[](std::size_t size) { return operator new(size); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { operator delete(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept {
  operator delete(memory);
}
