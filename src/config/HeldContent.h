// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_CONFIG_HELD_CONTENT_H
#define ZELCONFUTILS_CONFIG_HELD_CONTENT_H

#include <tuple>
#include <utility>

namespace Configuration {

/// Takes the content out of a file object's lists and cursors while they are filled anew, so that
/// it can be put back when memory runs out halfway. What is not put back is released.
template <class... Parts>
class HeldContent {
 public:
  /// The parts are empty afterwards, or as after construction.
  explicit HeldContent(Parts&... parts) : parts_(parts...) { Exchange(); }

  /// Puts the content back. The parts must still exist.
  void PutBack() noexcept { Exchange(); }

 private:
  void Exchange() noexcept { Exchange(std::index_sequence_for<Parts...>()); }

  template <std::size_t... I>
  void Exchange(std::index_sequence<I...>) noexcept {
    using std::swap;
    (swap(std::get<I>(parts_), std::get<I>(held_)), ...);
  }

  std::tuple<Parts&...> parts_;
  std::tuple<Parts...> held_;
};

}  // namespace Configuration

#endif
