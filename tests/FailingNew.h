// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FAILING_NEW_H
#define ZELCONFUTILS_TESTS_FAILING_NEW_H

#include <gtest/gtest.h>

#include <functional>
#include <memory>

/// Replaces the global `operator new` of the test program that links FailingNew.cpp, so that one
/// chosen allocation throws `std::bad_alloc` and every block is counted.
namespace FailingNew {

/// Blocks that are allocated and not yet released.
long LiveBlocks();

/// Runs `setUp` once for each allocation that the function it returns makes, with that
/// allocation failing, until a run needs none that fails. After each run `check(failed)` is
/// called, `failed` telling whether the operation threw `std::bad_alloc`. Returns the number of
/// allocations that were made to fail.
int ForEachAllocation(const std::function<std::function<void()>()>& setUp,
                      const std::function<void(bool failed)>& check);

/// The same for `operation` on a `World` that is made anew for each run. Memory that is left when
/// the `World` has gone is a failure.
template <class World>
int ForEachAllocationOn(const std::function<void(World&)>& operation,
                        const std::function<void(World&, bool failed)>& check) {
  long live = 0;
  std::unique_ptr<World> world;
  const auto setUp = [&] {
    live = LiveBlocks();
    world = std::make_unique<World>();
    return [&] { operation(*world); };
  };
  return ForEachAllocation(setUp, [&](bool failed) {
    check(*world, failed);
    world.reset();
    EXPECT_EQ(LiveBlocks(), live);
  });
}

}  // namespace FailingNew

#endif
