// SPDX-License-Identifier: MIT
#include "config/files/FileLock.h"

#include "platform/Platform.h"

namespace Platform = zelconfutils::Platform;

namespace Configuration {

namespace {

constexpr int kRetries = 100;
constexpr unsigned kRetryMilliseconds = 100;  // ten seconds in all: longer is no mere overlap

}  // namespace

FileLock::~FileLock() { Release(); }

bool FileLock::Acquire(std::FILE* stream) {
  descriptor_ = Platform::Descriptor(stream);
  held_ = Try();
  for (int retry = 0; retry < kRetries && !held_; ++retry) {
    Platform::SleepMilliseconds(kRetryMilliseconds);
    held_ = Try();
  }
  return held_;
}

bool FileLock::Try() {
  bytes_ = Platform::FileLength(descriptor_);
  return Platform::TryLockBytes(descriptor_, bytes_);
}

bool FileLock::Release() {
  if (held_) held_ = !Platform::UnlockBytes(descriptor_, bytes_);
  return !held_;
}

}  // namespace Configuration
