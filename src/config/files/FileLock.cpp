// SPDX-License-Identifier: MIT
#include "config/files/FileLock.h"

#include <chrono>

namespace Platform = zelconfutils::Platform;

namespace Configuration {

namespace {

constexpr int kRetries = 100;
constexpr unsigned kRetryMilliseconds = 100;  // ten seconds in all: longer is no mere overlap

// Waits for the next try. Those who wait for the same lock must not come back in step, or one of
// them may lose every time: the even waits are shorter by an arbitrary time, the odd ones longer
// by the same.
class UnevenWait {
 public:
  void Next() {
    if (!isLonger_) difference_ = Arbitrary(kRetryMilliseconds);
    const unsigned rest =
        isLonger_ ? kRetryMilliseconds + difference_ : kRetryMilliseconds - difference_;
    isLonger_ = !isLonger_;
    Platform::SleepMilliseconds(rest);
  }

 private:
  // Below `limit`. The clock's finest digits differ from process to process; the product mixes
  // them upward, for a clock whose lowest ones stand still.
  static unsigned Arbitrary(unsigned limit) {
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return static_cast<unsigned>((static_cast<std::uint64_t>(now) * 0x9E3779B97F4A7C15u >> 32) %
                                 limit);
  }

  unsigned difference_ = 0;
  bool isLonger_ = false;
};

}  // namespace

FileLock::~FileLock() { Release(); }

bool FileLock::Acquire(const Platform::File& file) {
  file_ = file;
  held_ = Try(file.length);
  UnevenWait wait;
  for (int retry = 0; retry < kRetries && !held_; ++retry) {
    wait.Next();
    held_ = Try(Platform::FileLength(file));
  }
  return held_;
}

bool FileLock::Try(std::int64_t bytes) {
  bytes_ = bytes;
  return bytes >= 0 && Platform::TryLockBytes(file_, bytes);
}

bool FileLock::Release() {
  if (held_) held_ = !Platform::UnlockBytes(file_, bytes_);
  return !held_;
}

}  // namespace Configuration
