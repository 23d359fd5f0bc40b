// SPDX-License-Identifier: MIT
#include "config/FileLock.h"

#include "platform/Platform.h"

namespace Configuration {

namespace {

constexpr int kRetries = 100;
constexpr unsigned kRetryMilliseconds = 100;  // ten seconds in all: longer is no mere overlap

}  // namespace

FileLock::~FileLock() {
  if (held_) Platform::UnlockBytes(descriptor_, Platform::FileLength(descriptor_));
}

bool FileLock::Acquire(std::FILE* stream) {
  descriptor_ = Platform::Descriptor(stream);
  held_ = Platform::TryLockBytes(descriptor_, Platform::FileLength(descriptor_));
  for (int retry = 0; retry < kRetries && !held_; ++retry) {
    Platform::SleepMilliseconds(kRetryMilliseconds);
    held_ = Platform::TryLockBytes(descriptor_, Platform::FileLength(descriptor_));
  }
  return held_;
}

bool FileLock::Release(std::FILE* stream) {
  if (!held_) return true;
  const int descriptor = Platform::Descriptor(stream);
  held_ = !Platform::UnlockBytes(descriptor, Platform::FileLength(descriptor));
  return !held_;
}

}  // namespace Configuration
