// SPDX-License-Identifier: MIT
//
// A query's condition, bound to the class whose instances it is asked of: names are looked up and
// types compared once, before the first instance.
//
// What is null makes a comparison false.
//
// Thread safety: constant once it is made.
#ifndef KECPP_TOOLS_AGENT_QUERY_CONDITION_H
#define KECPP_TOOLS_AGENT_QUERY_CONDITION_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/agent/query/Query.h"
#include "tools/common/Schema.h"

namespace tools::agent::query {

// An instance that a condition is asked of.
class Record {
 public:
  virtual ~Record() = default;

  // Appends the raw text of a value; of a list, each item followed by a NUL. False for null.
  virtual bool Read(const ClassProperty& property, std::string& out) const = 0;

  // The instance that is embedded in it, by its place in the scope; null when there is none.
  virtual const Record* Embedded(std::size_t) const { return nullptr; }
};

// What the paths of a condition mean.
struct Scope {
  struct Part {
    const char* name;
    const ClassRow* type;
  };

  const ClassRow* type;        // of the instances
  std::string alias;           // another name of an instance; or empty
  std::vector<Part> embedded;  // when there are any, their properties alone can be compared
};

class Condition {
 public:
  // Of instances of `type`. Paths may begin with `alias` or a class that the type is. Throws
  // OperationError, "invalid query", for an unknown name and for types that cannot be compared.
  Condition(const Expression& expression, const ClassRow& type, const std::string& alias);

  // As above. With embedded instances a condition may ask of several classes ("ISA ... AND ..."):
  // what cannot hold for the scope's classes is not bound to them.
  Condition(const Expression& expression, const Scope& scope);
  Condition(Condition&&) noexcept;
  ~Condition();

  bool Holds(const Record& record) const;

  // False when it holds for no instance of these classes.
  bool CanHold() const;

 private:
  struct Node;
  std::unique_ptr<Node> root;
};

// The property of `type` that a path names, which may begin with `alias` or a class that the type
// is. Throws as above.
ClassProperty FindProperty(const Path& path, const ClassRow& type, const std::string& alias);

// The key that an instance must have for the condition to hold: that of a comparison that nothing
// can make up for. Nothing when there is none.
std::optional<std::string> RequiredKey(const Expression& expression, const ClassRow& type,
                                       const std::string& alias);

}  // namespace tools::agent::query

#endif
