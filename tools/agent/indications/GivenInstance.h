// SPDX-License-Identifier: MIT
//
// What clients may give filters, destinations and subscriptions: which properties, of what type and
// value, and what an instance has where a client gives nothing.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_AGENT_INDICATIONS_GIVENINSTANCE_H
#define KECPP_TOOLS_AGENT_INDICATIONS_GIVENINSTANCE_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/Request.h"
#include "tools/agent/StoredInstances.h"

namespace tools::agent {

inline constexpr const char* FILTER_CLASS = "CIM_IndicationFilter";
inline constexpr const char* DESTINATION_CLASS = "CIM_ListenerDestinationCIMXML";
inline constexpr const char* SUBSCRIPTION_CLASS = "CIM_IndicationSubscription";

// When a property may get another value.
enum class Changes { Never, Unused, Always };  // Unused: while no subscription names the instance

// Who says the values of properties that are the server's.
enum class Author { Client, File };

// Finds the instance that a reference names; throws OperationError when there is none.
using Resolve = std::function<Stored(const KeyBinding& reference)>;

// The key of a filter or a destination that is not the same for all of them.
KeyBinding NameKey(const std::string& name);

// Whether clients make instances of that class.
bool IsGiven(const ClassRow& type);

// An instance of the class with these properties, and what is always the case for the others; the
// server's values are those of a file, or are null. Throws OperationError, "invalid parameter", for
// what is unknown, twice, of another type, no text or too long.
StoredInstance MakeInstance(const ClassRow& type, const std::vector<GivenProperty>& given,
                            Author author, const Resolve& resolve);

// The properties of an instance, as they could have been given.
std::vector<GivenProperty> PropertiesGiven(const StoredInstance& instance);

// Whether the property of the class may change, now or ever. It must be one of the class's.
Changes ChangesOf(const ClassRow& type, std::string_view property);

// The first text of a value, "" when it is null.
std::string TextOf(const StoredInstance& instance, std::string_view property);

}  // namespace tools::agent

#endif
