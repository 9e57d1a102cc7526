// SPDX-License-Identifier: MIT
//
// Queries: SELECT ... FROM ... WHERE ... in the languages WQL and DMTF:CQL, and the conditions
// alone that are DMTF:FQL. The text comes from clients: its length, depth and number of terms are
// bounded.
//
//   query  = SELECT ( "*" | path {"," path} ) FROM class [[AS] alias] [WHERE or]
//   or     = and {OR and}
//   and    = not {AND not}
//   not    = [NOT] ( "(" or ")" | term )
//   term   = operand ( "=" | "<>" | "!=" | "<" | "<=" | ">" | ">=" ) operand
//          | path ISA ( class | quoted class ) | path IS [NOT] NULL | path LIKE string
//   operand = path | number | string | TRUE | FALSE
//   path   = name {"." name} ["[" number "]"]
//
// Keywords and names compare without letter case. Strings are in single or double quotes; in them a
// backslash makes the next character plain, and a doubled quote is one.
//
// Thread safety: plain values.
#ifndef KECPP_TOOLS_AGENT_QUERY_QUERY_H
#define KECPP_TOOLS_AGENT_QUERY_QUERY_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tools::agent::query {

enum class Language { wql, cql, fql };

// By the name that a request has; nothing for a language that is not known.
std::optional<Language> FindLanguage(std::string_view name);

struct Path {
  std::vector<std::string> names;  // of which the first may be an alias or a class
  std::optional<std::size_t> item;
};

struct Operand {
  enum class Kind { Path, Text, Number, Flag };

  Kind kind = Kind::Path;
  Path path;
  std::string text;
  long double number = 0;  // exact for every integer of 64 bits
  bool flag = false;
};

struct Expression {
  enum class Kind {
    And,
    Or,
    Not,
    Equal,
    NotEqual,
    Less,
    LessEqual,
    Greater,
    GreaterEqual,
    IsA,
    IsNull,
    Like
  };

  Kind kind = Kind::And;
  std::vector<Expression> parts;  // of And, Or and Not
  Operand left;                   // of the others; a path where there is nothing on the right
  Operand right;                  // the text is the class of IsA, the pattern of Like
};

struct Query {
  std::vector<Path> selected;  // none: everything
  std::string className;
  std::string alias;  // empty: none
  std::optional<Expression> where;
};

// Both throw OperationError, "invalid query", for a text that is not of the language.
Query ParseQuery(Language language, std::string_view text);
Expression ParseCondition(std::string_view text);  // DMTF:FQL

}  // namespace tools::agent::query

#endif
