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

// Below, at or above 0, as `left` comes before, with or behind `right`: "vm-2" before "VM-10",
// "10.0.0.9" before "10.0.0.10". Texts that differ in case or in leading zeros alone are together.
int CompareTexts(std::string_view left, std::string_view right);

// With small letters of ASCII.
std::string Lowered(std::string_view text);

// Whether `text` has `lowered` in it, which has small letters of ASCII alone.
bool Contains(std::string_view text, std::string_view lowered);

}  // namespace tools::agent::api

#endif
