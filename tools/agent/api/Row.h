// SPDX-License-Identifier: MIT
//
// What a list shows and sorts of one object, and digests of what only its details show, so that two
// rows say which fields of the object differ.
//
// Thread safety: none.
#ifndef KECPP_TOOLS_AGENT_API_ROW_H
#define KECPP_TOOLS_AGENT_API_ROW_H

#include <kecpp/inventory.h>

#include <array>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tools::agent::api {

// In the order in which lists sort them.
enum class Power : std::uint8_t { on, off, suspended, unknown };
enum class Health : std::uint8_t { ok, degraded, error, unknown };

constexpr std::array<const char*, 4> POWER_NAMES = {"on", "off", "suspended", "unknown"};
constexpr std::array<const char*, 4> HEALTH_NAMES = {"ok", "degraded", "error", "unknown"};

Power PowerOf(kecpp::PowerState state);

// Of CIM's operational status.
Health HealthOf(unsigned operationalStatus);

// Up to four texts in one piece of memory, each with a zero behind it, so that all can be searched
// at once.
class Texts {
 public:
  Texts() = default;
  Texts(std::initializer_list<std::string_view> texts);

  // Empty for one that there is not.
  std::string_view At(std::size_t index) const {
    if (ends[index] == 0) return {};
    const std::uint32_t begin = index == 0 ? 0 : ends[index - 1];
    return std::string_view(bytes).substr(begin, ends[index] - begin - 1);
  }

  // With what separates them.
  std::string_view First(std::size_t count) const {
    return std::string_view(bytes).substr(0, count == 0 ? 0 : ends[count - 1]);
  }

 private:
  std::string bytes;
  std::array<std::uint32_t, 4> ends = {};  // of the zeros
};

// What the machines name as their host, by its key; it may not be known.
struct HostInfo {
  std::string name;
  bool isThere = false;
  std::array<std::size_t, 4> byPower = {};  // its machines

  std::size_t Machines() const { return byPower[0] + byPower[1] + byPower[2] + byPower[3]; }
};
using HostTable = std::unordered_map<std::string, HostInfo>;

// Which field of an object is where, Fields.cpp says.
struct Row {
  Texts texts;
  std::array<std::uint32_t, 2> numbers = {};
  std::array<std::uint32_t, 4> digests = {};
  Power power = Power::unknown;
  Health health = Health::unknown;
  HostTable::value_type* host = nullptr;  // of a machine, by who makes the row; may be null
};

// A row has a place as long as it is in its list.
using Rows = std::unordered_map<std::string, Row>;
using Entry = Rows::value_type;  // a key and its row

Row RowOf(const kecpp::Host& host);
Row RowOf(const kecpp::Machine& machine);
Row RowOf(const kecpp::Role& role);
Row RowOf(const kecpp::Privilege& privilege);
Row RowOf(const kecpp::Identity& identity);

}  // namespace tools::agent::api

#endif
