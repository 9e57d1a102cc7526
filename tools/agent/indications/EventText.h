// SPDX-License-Identifier: MIT
//
// What happened to an instance, and the part of an indication that says it, made once for all
// listeners.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_EVENTTEXT_H
#define KECPP_TOOLS_AGENT_INDICATIONS_EVENTTEXT_H

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "tools/agent/Rows.h"
#include "tools/common/Schema.h"

namespace tools::agent {

enum class EventType { Creation, Modification, Deletion };

inline constexpr std::array<const char*, 3> INDICATION_CLASSES = {
    "CIM_InstCreation", "CIM_InstModification", "CIM_InstDeletion"};

// What happened. Rows are those of ObjectElement and LinkElement, of one object or link each, with
// all properties of the class.
struct Event {
  EventType type;
  const ClassRow* source;
  const Rows* now;
  const Rows* before = nullptr;  // of a modification
};

// The same for all listeners.
struct EventText {
  const char* className;   // of the indication
  std::string time;        // as CIM writes it
  std::string properties;  // encoded
};

std::shared_ptr<const EventText> WriteEvent(const Event& event, const std::string& host);

// "20261122183000.123456+000", and back, without the parts of a second; the epoch for other texts.
std::string CimTime(std::chrono::system_clock::time_point time);
std::chrono::system_clock::time_point ReadCimTime(const std::string& text);

}  // namespace tools::agent

#endif
