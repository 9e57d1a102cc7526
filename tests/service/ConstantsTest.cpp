// SPDX-License-Identifier: MIT
//
// Programs read the exported constants by name, the library itself does not use them all.
#include <dlfcn.h>

#include <sstream>
#include <string>

#include "support/Answers.h"

namespace {

template <typename Type>
std::string ValueOf(const Row& row) {
  std::string symbol = "_ZN";
  for (const std::string& part : Split(row[1], "::")) symbol += std::to_string(part.size()) + part;
  const void* const constant = dlsym(RTLD_DEFAULT, (symbol + "E").c_str());
  if (constant == nullptr) return "not exported";
  std::ostringstream value;
  if constexpr (sizeof(Type) == 1) {
    value << int{*static_cast<const Type*>(constant)};
  } else {
    value << *static_cast<const Type*>(constant);
  }
  return value.str();
}

TEST(Constants, HaveTheValuesThatProgramsWereBuiltWith) {
  ExpectAnswers(KECPP_TEST_DATA "/cases/constants.txt", {{"text", ValueOf<const char*>},
                                                         {"char", ValueOf<signed char>},
                                                         {"bool", ValueOf<bool>},
                                                         {"short", ValueOf<short>},
                                                         {"int", ValueOf<int>},
                                                         {"uint", ValueOf<unsigned int>},
                                                         {"long", ValueOf<long long>},
                                                         {"float", ValueOf<float>},
                                                         {"double", ValueOf<double>}});
}

}  // namespace
