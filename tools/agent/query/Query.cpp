// SPDX-License-Identifier: MIT
#include "tools/agent/query/Query.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "tools/agent/query/Tokens.h"
#include "tools/common/Schema.h"

namespace tools::agent::query {
namespace {

using Kind = Expression::Kind;

constexpr std::size_t MAX_BYTES = 4096;
constexpr std::size_t MAX_DEPTH = 32;
constexpr std::size_t MAX_TERMS = 64;

constexpr std::pair<const char*, Language> LANGUAGES[] = {
    {"WQL", Language::wql}, {"DMTF:CQL", Language::cql}, {"CIM:CQL", Language::cql},
    {"CQL", Language::cql}, {"DMTF:FQL", Language::fql},
};

constexpr std::pair<const char*, Kind> COMPARISONS[] = {
    {"=", Kind::Equal},      {"<>", Kind::NotEqual}, {"!=", Kind::NotEqual},     {"<", Kind::Less},
    {"<=", Kind::LessEqual}, {">", Kind::Greater},   {">=", Kind::GreaterEqual},
};

constexpr const char* KEYWORDS[] = {"SELECT", "FROM", "WHERE", "AND",  "OR",   "NOT",
                                    "IS",     "ISA",  "LIKE",  "NULL", "TRUE", "FALSE"};

bool IsKeyword(const std::string& word) {
  for (const char* keyword : KEYWORDS) {
    if (SameName(word, keyword)) return true;
  }
  return false;
}

std::string_view Bounded(std::string_view text) {
  if (text.size() > MAX_BYTES) Refuse("it has more than 4096 bytes");
  return text;
}

class Parser {
 public:
  Parser(Language queryLanguage, std::string_view text)
      : language(queryLanguage), tokens(Bounded(text)) {}

  Query ReadQuery() {
    Query query;
    Need("SELECT");
    if (!tokens.TakeSign("*")) {
      do query.selected.push_back(ReadPath());
      while (tokens.TakeSign(","));
    }
    Need("FROM");
    query.className = Name();
    if (tokens.TakeWord("AS")) {
      query.alias = Name();
    } else if (tokens.Next().kind == Token::Kind::Word && !tokens.IsWord("WHERE")) {
      query.alias = Name();
    }
    if (tokens.TakeWord("WHERE")) query.where = ReadOr(0);
    NeedEnd();
    return query;
  }

  Expression ReadCondition() {
    Expression condition = ReadOr(0);
    NeedEnd();
    return condition;
  }

 private:
  void Need(const char* word) {
    if (!tokens.TakeWord(word)) Refuse(std::string(word) + " is missing");
  }

  void NeedEnd() {
    if (tokens.Next().kind != Token::Kind::End) Refuse("more follows: " + tokens.Next().text);
  }

  std::string Name() {
    if (tokens.Next().kind != Token::Kind::Word || IsKeyword(tokens.Next().text)) {
      Refuse("a name is missing");
    }
    return tokens.Take().text;
  }

  Path ReadPath() {
    Path path;
    do path.names.push_back(Name());
    while (tokens.TakeSign("."));
    if (!tokens.TakeSign("[")) return path;
    const std::string number = tokens.Take().text;
    std::size_t item = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), item);
    if (result.ec != std::errc() || result.ptr != number.data() + number.size()) {
      Refuse("an item's number is missing");
    }
    path.item = item;
    if (!tokens.TakeSign("]")) Refuse("] is missing");
    return path;
  }

  Operand ReadOperand() {
    Operand operand;
    const Token::Kind kind = tokens.Next().kind;
    if (kind == Token::Kind::Text) {
      operand.kind = Operand::Kind::Text;
      operand.text = tokens.Take().text;
    } else if (kind == Token::Kind::Number) {
      operand.kind = Operand::Kind::Number;
      operand.number = ReadNumber();
    } else if (tokens.IsWord("TRUE") || tokens.IsWord("FALSE")) {
      operand.kind = Operand::Kind::Flag;
      operand.flag = SameName(tokens.Take().text, "TRUE");
    } else {
      operand.path = ReadPath();
    }
    return operand;
  }

  long double ReadNumber() {
    const std::string text = tokens.Take().text;
    char* end = nullptr;
    const long double number = std::strtold(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(number)) Refuse(text + " is no number");
    return number;
  }

  Expression ReadOr(std::size_t depth) { return ReadList(Kind::Or, "OR", depth, &Parser::ReadAnd); }

  Expression ReadAnd(std::size_t depth) {
    return ReadList(Kind::And, "AND", depth, &Parser::ReadNot);
  }

  Expression ReadList(Kind kind, const char* word, std::size_t depth,
                      Expression (Parser::*read)(std::size_t)) {
    Expression first = (this->*read)(depth);
    if (!tokens.IsWord(word)) return first;
    Expression list;
    list.kind = kind;
    list.parts.push_back(std::move(first));
    while (tokens.TakeWord(word)) list.parts.push_back((this->*read)(depth));
    return list;
  }

  Expression ReadNot(std::size_t depth) {
    if (depth == MAX_DEPTH) Refuse("it is nested more than 32 deep");
    if (tokens.TakeWord("NOT")) return Not(ReadNot(depth + 1));
    if (!tokens.TakeSign("(")) return ReadTerm();
    Expression inner = ReadOr(depth + 1);
    if (!tokens.TakeSign(")")) Refuse(") is missing");
    return inner;
  }

  static Expression Not(Expression inner) {
    Expression made;
    made.kind = Kind::Not;
    made.parts.push_back(std::move(inner));
    return made;
  }

  Expression ReadTerm() {
    if (++terms > MAX_TERMS) Refuse("it has more than 64 terms");
    Expression term;
    term.left = ReadOperand();
    for (const auto& [sign, kind] : COMPARISONS) {
      if (!tokens.TakeSign(sign)) continue;
      term.kind = kind;
      term.right = ReadOperand();
      return term;
    }
    if (term.left.kind != Operand::Kind::Path) Refuse("a comparison is missing");
    if (tokens.TakeWord("IS")) return ReadIsNull(std::move(term));
    if (tokens.TakeWord("ISA")) return ReadIsA(std::move(term));
    if (tokens.TakeWord("LIKE")) return ReadLike(std::move(term));
    Refuse("a comparison is missing");
  }

  Expression ReadIsNull(Expression term) {
    const bool denied = tokens.TakeWord("NOT");
    Need("NULL");
    term.kind = Kind::IsNull;
    return denied ? Not(std::move(term)) : term;
  }

  Expression ReadIsA(Expression term) {
    term.kind = Kind::IsA;
    term.right.kind = Operand::Kind::Text;
    term.right.text = tokens.Next().kind == Token::Kind::Text ? tokens.Take().text : Name();
    return term;
  }

  // In the other languages the pattern is a regular expression, of which a part would be a guess.
  Expression ReadLike(Expression term) {
    if (language != Language::wql) Refuse("LIKE is answered in WQL only");
    if (tokens.Next().kind != Token::Kind::Text) Refuse("the pattern is missing");
    term.kind = Kind::Like;
    term.right.kind = Operand::Kind::Text;
    term.right.text = tokens.Take().text;
    return term;
  }

  const Language language;
  Tokens tokens;
  std::size_t terms = 0;
};

}  // namespace

std::optional<Language> FindLanguage(std::string_view name) {
  for (const auto& [known, language] : LANGUAGES) {
    if (SameName(name, known)) return language;
  }
  return {};
}

Query ParseQuery(Language language, std::string_view text) {
  return Parser(language, text).ReadQuery();
}

Expression ParseCondition(std::string_view text) {
  return Parser(Language::fql, text).ReadCondition();
}

}  // namespace tools::agent::query
