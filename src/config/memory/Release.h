// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_MEMORY_RELEASE_H
#define ZELCONFUTILS_MEMORY_RELEASE_H

#include <memory>
#include <utility>

namespace Configuration {

/// Deletes what an owning member points to and makes the member null: safe to run twice.
template <class Object>
void Release(Object*& member) {
  delete std::exchange(member, nullptr);
}

/// The same for a text or a block.
inline void Release(char*& block) { delete[] std::exchange(block, nullptr); }

/// Gives an owning member what was made for it; `fresh` holds what the member had, to release it.
template <class Object, class Owned>
void Exchange(Object*& member, std::unique_ptr<Owned>& fresh) noexcept {
  fresh.reset(std::exchange(member, fresh.release()));
}

}  // namespace Configuration

#endif
