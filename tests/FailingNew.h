// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_FAILING_NEW_H
#define ZELCONFUTILS_TESTS_FAILING_NEW_H

#include <functional>

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

}  // namespace FailingNew

#endif
