// SPDX-License-Identifier: MIT
//
// Begins the definition of a function that takes the place of a system's function in the whole
// process, as the executable's own or a preloaded library's:
//
//   REPLACED_SYMBOL(int, RefusedOpen, "open", (const char* path, int flags, ...)) { return -1; }
//
// It is named by its symbol: headers redirect some names, give others inline bodies, and declare
// others with attributes that a definition must not repeat. "used" keeps it although nothing calls
// it by this name.
#ifndef KECPP_TESTS_SUPPORT_REPLACEDSYMBOL_H
#define KECPP_TESTS_SUPPORT_REPLACEDSYMBOL_H

#define REPLACED_SYMBOL(result, function, symbol, parameters)                          \
  result function parameters asm(symbol) __attribute__((used, visibility("default"))); \
  result function parameters

#endif
