// SPDX-License-Identifier: MIT
#include "config/files/Failure.h"

#include <string>

#include "ConfigException.h"

namespace Configuration::Failure {

namespace {

[[noreturn]] void Throw(const std::string& message) { throw ConfigException(message.c_str()); }

}  // namespace

void Throw(const char* action, const char* path, const char* reason) {
  Throw(std::string("Error ") + action + " file \"" + path + "\" : " + reason);
}

void ThrowNoDirectory(const char* directory) {
  Throw(std::string("Path ") + directory + " does not exist.");
}

void ThrowCorrupted(const char* path) {
  Throw(std::string("File \"") + (path != nullptr ? path : "") + "\" is corrupted!");
}

void ThrowTokenTooShort() { Throw("Length of section's start & stop tokens must be at least 2!"); }

}  // namespace Configuration::Failure
