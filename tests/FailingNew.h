// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FAILING_NEW_H
#define ZELCONFUTILS_TESTS_FAILING_NEW_H

#include <functional>
#include <optional>
#include <stdexcept>

/// Replaces the global `operator new` of the program that links FailingNew.cpp, so that one chosen
/// allocation throws `std::bad_alloc` and every block is counted.
namespace FailingNew {

/// Blocks that are allocated and not yet released.
long LiveBlocks();

/// Blocks that have been allocated at any time.
long AllBlocks();

/// Runs `operation` once for each of its allocations, with that allocation failing, and at last
/// without a failure. After each run `check(failed)` is called, `failed` telling whether the
/// operation threw `std::bad_alloc`. Returns the number of allocations that were made to fail.
int ForEachAllocation(const std::function<void()>& operation,
                      const std::function<void(bool failed)>& check);

/// The same for `operation` on a `Fixture` that is made anew for each run. Throws when memory is
/// left after the end of a `Fixture`.
template <class Fixture>
int ForEachAllocationOn(const std::function<void(Fixture&)>& operation,
                        const std::function<void(Fixture&, bool failed)>& check) {
  std::optional<Fixture> fixture(std::in_place);
  long live = 0;
  const auto run = [&] {
    live = LiveBlocks();
    operation(*fixture);
  };
  return ForEachAllocation(run, [&](bool failed) {
    check(*fixture, failed);
    fixture.emplace();
    if (LiveBlocks() != live) throw std::logic_error("a leak");
  });
}

}  // namespace FailingNew

#endif
