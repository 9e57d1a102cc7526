// SPDX-License-Identifier: MIT
//
// kecpp-soak [MINUTES [SEED]]
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "soak/Soak.h"

int main(int argc, char** argv) {
  soak::Plan plan;
  if (argc > 1) plan.minutes = std::strtod(argv[1], nullptr);
  if (argc > 2) plan.seed = std::strtoull(argv[2], nullptr, 10);
  if (argc > 3 || !(plan.minutes > 0)) {
    std::fprintf(stderr, "usage: kecpp-soak [MINUTES [SEED]]\n");
    return 2;
  }
  try {
    return soak::Soak(plan) ? EXIT_SUCCESS : EXIT_FAILURE;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kecpp-soak: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
