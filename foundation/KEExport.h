// SPDX-License-Identifier: MIT
//
// KECPP_API marks what the shared library exports. Everything else is hidden.
#ifndef KECPP_FOUNDATION_KEEXPORT_H
#define KECPP_FOUNDATION_KEEXPORT_H

// Exception classes need the mark as well: a hidden type would not be caught across the library.
#define KECPP_API __attribute__((visibility("default")))

#endif
