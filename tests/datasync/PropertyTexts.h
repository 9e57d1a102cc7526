// SPDX-License-Identifier: MIT
//
// A property list, written as one text with blanks between its elements.
#ifndef KECPP_TESTS_DATASYNC_PROPERTYTEXTS_H
#define KECPP_TESTS_DATASYNC_PROPERTYTEXTS_H

#include <sstream>
#include <string>

#include "foundation/KEString.h"
#include "foundation/KEVector.h"

class PropertyTexts : public KELib::KEVector<KELib::KEString> {
 public:
  explicit PropertyTexts(const std::string& elements) {
    std::istringstream words(elements);
    for (std::string word; words >> word;) Add(KELib::KEString(word.c_str()));
  }
};

#endif
