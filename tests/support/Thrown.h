// SPDX-License-Identifier: MIT
//
// What a step throws of the library's exceptions, as one text: "NumberRangeException: the message",
// or "nothing". The class is the dynamic one, without its namespaces.
#ifndef KECPP_TESTS_SUPPORT_THROWN_H
#define KECPP_TESTS_SUPPORT_THROWN_H

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <typeinfo>

#include "foundation/KEException.h"

inline std::string Described(const KELib::Exception& e) {
  const std::unique_ptr<char, decltype(&std::free)> whole(
      abi::__cxa_demangle(typeid(e).name(), nullptr, nullptr, nullptr), std::free);
  const std::string name = whole.get();
  return name.substr(name.rfind(':') + 1) + ": " + e.What();
}

template <typename Step>
std::string Thrown(Step step) {
  try {
    step();
  } catch (const KELib::Exception& e) {
    return Described(e);
  }
  return "nothing";
}

#endif
