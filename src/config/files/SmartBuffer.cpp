// SPDX-License-Identifier: MIT
#include "SmartBuffer.h"

namespace {

constexpr std::size_t kBlockBytes = 1024;  // the longest line that a file object composes

}  // namespace

SmartBuffer::SmartBuffer() : data(new char[kBlockBytes]), blockSize(kBlockBytes) { data[0] = '\0'; }

SmartBuffer::~SmartBuffer() { delete[] data; }

SmartBuffer& SmartBuffer::operator=(const SmartBuffer& other) = default;

char* SmartBuffer::operator&() { return data; }

const char* SmartBuffer::operator()() const { return data; }

char& SmartBuffer::operator[](std::size_t index) { return data[index]; }

char& SmartBuffer::operator[](std::size_t index) const { return data[index]; }

std::size_t SmartBuffer::size() const { return blockSize; }
