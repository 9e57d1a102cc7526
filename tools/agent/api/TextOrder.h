// SPDX-License-Identifier: MIT
//
// How people order and find texts: letters of ASCII without their case, numbers by their value.
//
// Thread safety: functions without state.
#ifndef KECPP_TOOLS_AGENT_API_TEXTORDER_H
#define KECPP_TOOLS_AGENT_API_TEXTORDER_H

#include <string>
#include <string_view>

namespace tools::agent::api {

// Appends what puts a text into its place when it is compared byte by byte: "vm-2" before "VM-10",
// "10.0.0.9" before "10.0.0.10". Texts that differ in case or in leading zeros alone have the same.
// It ends with a byte that no part before has in its place, so another text may follow.
void AppendSortable(std::string_view text, std::string& to);

// With small letters of ASCII.
std::string Lowered(std::string_view text);

// Whether `text` has `lowered` in it, which has small letters of ASCII alone.
bool Contains(std::string_view text, std::string_view lowered);

}  // namespace tools::agent::api

#endif
