// SPDX-License-Identifier: MIT
#include "ConfigException.h"

#include <utility>

#include "text/Text.h"

namespace Text = zelconfutils::Text;

ConfigException::ConfigException(const char* text) : message(Text::Duplicate(text)) {}

ConfigException::ConfigException(const ConfigException& other)
    : std::exception(), message(Text::Duplicate(other.message)) {}

ConfigException::~ConfigException() { delete[] message; }

ConfigException& ConfigException::operator=(const ConfigException& other) {
  if (this != &other) delete[] std::exchange(message, Text::Duplicate(other.message));
  return *this;
}

const char* ConfigException::what() const noexcept { return message; }
