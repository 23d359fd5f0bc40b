// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_FILES_REFILL_H
#define ZELCONFUTILS_FILES_REFILL_H

#include <new>
#include <tuple>
#include <type_traits>
#include <utility>

#include "ConfigException.h"
#include "config/memory/Release.h"

namespace Configuration {

/// The content of a file object, taken out of its members while they are filled anew.
template <class... Parts>
class HeldContent {
 public:
  /// The parts (lists, cursors, flags, owned texts) are as after construction afterwards.
  explicit HeldContent(Parts&... parts) : parts_(parts...) { Exchange(); }
  HeldContent(const HeldContent&) = delete;
  HeldContent& operator=(const HeldContent&) = delete;

  /// Releases what is held: the former content, or behind `PutBack` the new one.
  ~HeldContent() {
    std::apply([](Parts&... held) { (ReleaseText(held), ...); }, held_);
  }

  /// Gives the parts their former content. They must still exist.
  void PutBack() noexcept { Exchange(); }

 private:
  void Exchange() noexcept { Exchange(std::index_sequence_for<Parts...>()); }

  template <std::size_t... I>
  void Exchange(std::index_sequence<I...>) noexcept {
    using std::swap;
    (swap(std::get<I>(parts_), std::get<I>(held_)), ...);
  }

  template <class Part>
  static void ReleaseText(Part& held) {
    if constexpr (std::is_same_v<Part, char*>) Release(held);  // all others release themselves
  }

  std::tuple<Parts&...> parts_;
  std::tuple<Parts...> held_{};
};

/// Runs `step`; before an `Exception` of it goes on to the caller, `undo` runs.
template <class Exception, class Step, class Undo>
auto OnFailure(Step step, Undo undo) {
  try {
    return step();
  } catch (const Exception&) {
    undo();
    throw;
  }
}

/// Runs `fill` on emptied parts of a file object. When memory runs out halfway, the parts get
/// their former content back.
template <class Fill, class... Parts>
auto Refill(Fill fill, Parts&... parts) {
  HeldContent<Parts...> held(parts...);
  return OnFailure<std::bad_alloc>(fill, [&] { held.PutBack(); });
}

/// Runs `step`; before a `ConfigException` of it goes on to the caller, `tidy` releases what the
/// file object holds. The message stands by then: it may quote what is released.
template <class Step, class Tidy>
auto TidyOnFailure(Step step, Tidy tidy) {
  return OnFailure<ConfigException>(step, tidy);
}

}  // namespace Configuration

#endif
