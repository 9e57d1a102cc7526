// SPDX-License-Identifier: MIT
#include "simulator/MadeUp.h"

#include <cstdio>

namespace sim {

std::uint64_t MadeUpNumber(std::uint64_t x) {
  x ^= x >> 33;
  x *= 0xff51afd7ed558ccdULL;
  x ^= x >> 33;
  return x;
}

std::string MadeUpUuid(std::uint64_t seed) {
  const std::uint64_t a = MadeUpNumber(seed), b = MadeUpNumber(seed + 1);
  char text[48];
  std::snprintf(text, sizeof(text), "%08x-%04x-%04x-%04x-%012llx", static_cast<unsigned int>(a),
                static_cast<unsigned int>(a >> 32) & 0xFFFFU, static_cast<unsigned int>(a >> 48),
                static_cast<unsigned int>(b) & 0xFFFFU, static_cast<unsigned long long>(b >> 16));
  return text;
}

std::string MadeUpAddress(unsigned int number) {
  return "10." + std::to_string(number >> 16 & 255) + "." + std::to_string(number >> 8 & 255) +
         "." + std::to_string(number & 255);
}

Property TextProperty(const char* name, const std::string& xml) {
  return {name, xml, " xsi:type=\"xsd:string\"", false, 0};
}

Property MembersProperty(const char* name) {
  return {name, "", " xsi:type=\"ArrayOfManagedObjectReference\"", true, 0};
}

std::string MadeUpName(const std::string& stem, unsigned int number) {
  std::string name = stem + std::to_string(number);
  if (number % 17 == 5) name += " &lt;R&amp;D&gt;";
  if (number % 23 == 7) name += " K\xc3\xb6ln";
  return name;
}

}  // namespace sim
