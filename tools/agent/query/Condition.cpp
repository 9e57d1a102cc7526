// SPDX-License-Identifier: MIT
#include "tools/agent/query/Condition.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "tools/agent/query/Tokens.h"
#include "tools/common/Split.h"

namespace tools::agent::query {
namespace {

using Kind = Expression::Kind;

// What can be compared with each other.
enum class Sort { Text, Number, Flag };

Sort SortOf(CimType type) {
  switch (type) {
    case CimType::Boolean:
      return Sort::Flag;
    case CimType::UInt16:
    case CimType::UInt32:
    case CimType::UInt64:
    case CimType::SInt64:
      return Sort::Number;
    case CimType::Reference:
      Refuse("references are not compared");
    default:
      return Sort::Text;
  }
}

// Whether a name at the begin of a path means the instance itself.
bool IsSelf(const std::string& name, const ClassRow& type, const std::string& alias) {
  if (!alias.empty() && SameName(name, alias)) return true;
  const ClassRow* named = FindClass(name);
  return named && DerivesFrom(type, *named);
}

// Without the name of the instance itself at its begin.
Path Shortened(const Path& path, const Scope& scope) {
  Path rest = path;
  if (rest.names.size() > 1 && IsSelf(rest.names[0], *scope.type, scope.alias)) {
    rest.names.erase(rest.names.begin());
  }
  return rest;
}

// The place of the embedded instance that a path begins with.
std::size_t FindEmbedded(const Path& shortened, const Scope& scope) {
  for (std::size_t i = 0; i < scope.embedded.size(); ++i) {
    if (SameName(shortened.names[0], scope.embedded[i].name)) return i;
  }
  Refuse(shortened.names[0] + " cannot be compared");
}

// The class of the instance that a path names.
const ClassRow& FindInstance(const Path& path, const Scope& scope) {
  if (path.names.size() == 1 && IsSelf(path.names[0], *scope.type, scope.alias)) return *scope.type;
  const Path rest = Shortened(path, scope);
  if (rest.names.size() != 1 || scope.embedded.empty()) {
    Refuse("ISA is asked of what is no instance");
  }
  return *scope.embedded[FindEmbedded(rest, scope)].type;
}

bool IsOfClass(const Expression& expression, const Scope& scope) {
  const ClassRow* asked = FindClass(expression.right.text);
  if (!asked) Refuse("there is no class " + expression.right.text);
  return DerivesFrom(FindInstance(expression.left.path, scope), *asked);
}

// What an expression is for every instance of the scope's classes; nothing when that depends.
std::optional<bool> KnownValue(const Expression& expression, const Scope& scope) {
  if (expression.kind == Kind::IsA) return IsOfClass(expression, scope);
  if (expression.kind == Kind::Not) {
    const auto inner = KnownValue(expression.parts.front(), scope);
    return inner ? std::optional<bool>(!*inner) : std::nullopt;
  }
  if (expression.parts.empty()) return {};
  const bool decisive = expression.kind == Kind::Or;
  bool isKnown = true;
  for (const Expression& part : expression.parts) {
    const auto value = KnownValue(part, scope);
    if (value == decisive) return decisive;
    isKnown = isKnown && value;
  }
  return isKnown ? std::optional<bool>(!decisive) : std::nullopt;
}

// One side of a comparison: a literal, or where to read the value.
struct Side {
  Sort sort = Sort::Text;
  std::optional<ClassProperty> property;
  std::optional<std::size_t> embedded;  // in which instance; none: in the one that is asked
  std::optional<std::size_t> item;
  std::string text;
  long double number = 0;
  bool flag = false;

  Side() = default;
  Side(const Operand& operand, const Scope& scope) {
    switch (operand.kind) {
      case Operand::Kind::Text:
        text = operand.text;
        break;
      case Operand::Kind::Number:
        sort = Sort::Number;
        number = operand.number;
        break;
      case Operand::Kind::Flag:
        sort = Sort::Flag;
        flag = operand.flag;
        break;
      default:
        BindPath(operand.path, scope);
    }
  }

  void BindPath(const Path& path, const Scope& scope) {
    if (scope.embedded.empty()) {
      property = FindProperty(path, *scope.type, scope.alias);
    } else {
      Path rest = Shortened(path, scope);
      embedded = FindEmbedded(rest, scope);
      rest.names.erase(rest.names.begin());
      if (rest.names.empty()) Refuse("whole instances are not compared");
      property = FindProperty(rest, *scope.embedded[*embedded].type, "");
    }
    sort = SortOf(property->row->type);
    item = path.item;
  }

  // With the record's value instead of the path; nothing for null.
  std::optional<Side> With(const Record& record) const {
    if (!property) return *this;
    Side value;
    value.sort = sort;
    const Record* instance = embedded ? record.Embedded(*embedded) : &record;
    if (!instance || !instance->Read(*property, value.text)) return {};
    if (item) {
      const auto items = Split(value.text, '\0');
      if (*item >= items.size()) return {};
      value.text = std::string(items[*item]);
    }
    if (sort == Sort::Number) value.number = std::strtold(value.text.c_str(), nullptr);
    if (sort == Sort::Flag) value.flag = SameName(value.text, "TRUE");
    return value;
  }
};

int Compare(const Side& left, const Side& right) {
  switch (left.sort) {
    case Sort::Number:
      return left.number < right.number ? -1 : left.number > right.number ? 1 : 0;
    case Sort::Flag:
      return static_cast<int>(left.flag) - static_cast<int>(right.flag);
    default:
      return left.text.compare(right.text);
  }
}

bool Satisfies(Kind kind, int order) {
  switch (kind) {
    case Kind::Equal:
      return order == 0;
    case Kind::NotEqual:
      return order != 0;
    case Kind::Less:
      return order < 0;
    case Kind::LessEqual:
      return order <= 0;
    case Kind::Greater:
      return order > 0;
    default:
      return order >= 0;
  }
}

// "%" is any text, "_" any character. Goes back to the last "%" only, so it takes no more steps
// than text times pattern has.
bool IsLike(std::string_view text, std::string_view pattern) {
  std::size_t at = 0, in = 0;
  std::optional<std::size_t> star;
  std::size_t resume = 0;
  while (at < text.size()) {
    if (in < pattern.size() && pattern[in] == '%') {
      star = in++;
      resume = at;
    } else if (in < pattern.size() && (pattern[in] == '_' || pattern[in] == text[at])) {
      ++in;
      ++at;
    } else if (star) {
      in = *star + 1;
      at = ++resume;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('%', in) == std::string_view::npos;
}

void CheckArray(const Side& side) {
  if (side.property && side.property->row->isArray != side.item.has_value()) {
    Refuse(std::string(side.property->row->name) +
           (side.item ? " is no list" : " is a list: one item of it can be compared"));
  }
}

}  // namespace

struct Condition::Node {
  Kind kind;
  std::vector<Node> parts;
  Side left;
  Side right;
  std::optional<bool> known;

  Node(const Expression& expression, const Scope& scope) : kind(expression.kind) {
    if (kind == Kind::IsA || !scope.embedded.empty()) known = KnownValue(expression, scope);
    if (known) return;
    for (const Expression& part : expression.parts) parts.emplace_back(part, scope);
    if (parts.empty()) BindSides(expression, scope);
  }

  void BindSides(const Expression& expression, const Scope& scope) {
    left = Side(expression.left, scope);
    if (kind == Kind::IsNull) return;
    right = Side(expression.right, scope);
    CheckArray(left);
    CheckArray(right);
    if (left.sort != right.sort) Refuse("values of different types are compared");
    const bool isOrder = kind != Kind::Equal && kind != Kind::NotEqual;
    if (left.sort == Sort::Flag && isOrder) Refuse("booleans have no order");
    if (kind == Kind::Like && left.sort != Sort::Text) Refuse("LIKE is for texts");
  }

  bool Holds(const Record& record) const {
    if (known) return *known;
    const auto holds = [&](const Node& part) { return part.Holds(record); };
    switch (kind) {
      case Kind::And:
        return std::all_of(parts.begin(), parts.end(), holds);
      case Kind::Or:
        return std::any_of(parts.begin(), parts.end(), holds);
      case Kind::Not:
        return !parts.front().Holds(record);
      case Kind::IsNull:
        return !left.With(record);
      default:
        return Compares(record);
    }
  }

  bool Compares(const Record& record) const {
    const auto first = left.With(record);
    const auto second = right.With(record);
    if (!first || !second) return false;
    return kind == Kind::Like ? IsLike(first->text, second->text)
                              : Satisfies(kind, Compare(*first, *second));
  }
};

Condition::Condition(const Expression& expression, const ClassRow& type, const std::string& alias)
    : Condition(expression, {&type, alias, {}}) {}

Condition::Condition(const Expression& expression, const Scope& scope)
    : root(std::make_unique<Node>(expression, scope)) {}

Condition::Condition(Condition&&) noexcept = default;

Condition::~Condition() = default;

bool Condition::Holds(const Record& record) const {
  return root->Holds(record);
}

bool Condition::CanHold() const {
  return root->known.value_or(true);
}

ClassProperty FindProperty(const Path& path, const ClassRow& type, const std::string& alias) {
  const std::string& name = path.names.back();
  const bool isOwn =
      path.names.size() == 1 || (path.names.size() == 2 && IsSelf(path.names[0], type, alias));
  const auto all = PropertiesOf(type);
  const auto found = std::find_if(all.begin(), all.end(), [&](const ClassProperty& property) {
    return isOwn && SameName(property.row->name, name);
  });
  if (found == all.end()) Refuse(std::string(type.name) + " has no property " + name);
  return *found;
}

std::optional<std::string> RequiredKey(const Expression& expression, const ClassRow& type,
                                       const std::string& alias) {
  if (expression.kind == Kind::And) {
    for (const Expression& part : expression.parts) {
      if (auto key = RequiredKey(part, type, alias)) return key;
    }
  }
  if (expression.kind != Kind::Equal || !type.key) return {};
  const Operand* path = &expression.left;
  const Operand* text = &expression.right;
  if (path->kind != Operand::Kind::Path) std::swap(path, text);
  if (path->kind != Operand::Kind::Path || text->kind != Operand::Kind::Text) return {};
  const ClassProperty property = FindProperty(path->path, type, alias);
  return SameName(property.row->name, type.key->name) ? std::optional(text->text) : std::nullopt;
}

}  // namespace tools::agent::query
