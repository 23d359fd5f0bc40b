// SPDX-License-Identifier: MIT
#ifndef ZELCONFUTILS_TESTS_CALLS_H
#define ZELCONFUTILS_TESTS_CALLS_H

#include <cstddef>
#include <string>
#include <type_traits>

#include "ConfigException.h"

/// What a call says, or the message of what it throws.
template <class Call>
std::string Outcome(Call call) {
  try {
    return call();
  } catch (const ConfigException& failure) {
    return failure.what();
  }
}

/// Calls that are chosen by their text.
namespace Scenarios {

/// What a call is made with, by the names that stand for it in a table of calls; any other name is
/// a `text` of which a family makes what the call takes. Buffers have a few bytes more than it is
/// told.
struct Arguments {
  std::string key = "", value = "", text = "";
  int number = 0;
  std::size_t size = 64, otherSize = 64;
  std::string buffer = std::string(100, '~'), other = std::string(100, '~');

  void Set(const std::string& name, const std::string& literal) {
    if (name == "number") {
      number = std::stoi(literal);
    } else if (name == "size" || name == "otherSize") {
      (name == "size" ? size : otherSize) = std::stoul(literal);
    } else {
      (name == "key" ? key : name == "value" ? value : text) = literal;
    }
  }
};

/// A call on an object, and what stands for it in a scenario.
template <class Object>
struct Call {
  std::string text;
  std::string (*run)(Object& on, Arguments& with);
};

/// The function that says the result of `call`, in which the names of `Arguments` may stand.
#define SCENARIO_FUNCTION(Object, call)                                                           \
  [](Object on, Scenarios::Arguments& with) {                                                     \
    [[maybe_unused]] const char *const key = with.key.c_str(), *const value = with.value.c_str(); \
    [[maybe_unused]] const char* const text = with.text.c_str();                                  \
    [[maybe_unused]] char *const buffer = with.buffer.data(), *const other = with.other.data();   \
    [[maybe_unused]] const std::size_t size = with.size, otherSize = with.otherSize;              \
    [[maybe_unused]] const int number = with.number;                                              \
    if constexpr (std::is_void_v<decltype(on.call)>) {                                            \
      on.call;                                                                                    \
      return std::string();                                                                       \
    } else {                                                                                      \
      return ResultText(on, on.call);                                                             \
    }                                                                                             \
  }
/// The entry of a table for `on.call`.
#define SCENARIO_CALL(call) \
  { .text = #call, .run = SCENARIO_FUNCTION(auto&, call) }

std::string ResultText(auto&, bool result) { return result ? "true" : "false"; }
std::string ResultText(auto&, std::size_t result) { return std::to_string(result); }
std::string ResultText(auto&, const std::string& result) { return result; }

}  // namespace Scenarios

#endif
