// SPDX-License-Identifier: MIT
//
// The kinds of objects that the programs know, and what kecpp-inventory shows of each. To add a
// kind, add its class to SystemClasses.cpp and a row to Kinds.cpp.
//
// Thread safety: constant.
#ifndef KECPP_TOOLS_COMMON_KINDS_H
#define KECPP_TOOLS_COMMON_KINDS_H

#include <string_view>
#include <vector>

#include "tools/common/Schema.h"

namespace tools {

// Kinds that are watched together and may be linked with each other. A daemon may hide the
// authorization group from an account.
enum class Group { systems, authorization };

// A column of a kind's table.
struct Column {
  enum class Form {
    text,
    status,   // the word for an operational status
    count,    // how many items a list has
    items,    // the items of a list
    hostName  // the name of the host whose key this is
  };

  const char* heading;
  const char* value;  // one of the kind's values, by name
  Form form = Form::text;
};

struct Kind {
  kecpp::Kind kind;
  const char* name;   // of its list, on the command line and in JSON
  const char* title;  // of its table
  Group group;
  const char* properties;          // the class's properties that are shown, with blanks between
  std::vector<PropertyRow> links;  // shown after them: the keys of what an object is linked to
  std::vector<Column> columns;     // of its table
};

// In the order in which they are shown.
const std::vector<Kind>& Kinds();

// Null when there is no list of that name.
const Kind* FindKind(std::string_view listName);

// The row of a kind.
const Kind& KindRow(kecpp::Kind kind);

// The group of a class, or of the ends of an association class; systems when no kind is of it.
Group GroupOf(const ClassRow& type);

// Everything that is shown of a kind: its properties, then its links.
const std::vector<ClassProperty>& ValuesOf(const Kind& kind);

}  // namespace tools

#endif
