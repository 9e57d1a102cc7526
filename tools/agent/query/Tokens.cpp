// SPDX-License-Identifier: MIT
#include "tools/agent/query/Tokens.h"

#include <utility>

#include "tools/agent/Errors.h"
#include "tools/common/Schema.h"

namespace tools::agent::query {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool IsInWord(char c) {
  return IsLetter(c) || IsDigit(c);
}

bool IsInNumber(char c) {
  return IsInWord(c) || c == '.' || c == '+' || c == '-';
}

}  // namespace

void Refuse(const std::string& why) {
  throw OperationError(Status::InvalidQuery, "the query is not understood: " + why);
}

Token Tokens::Take() {
  return std::exchange(next, Cut());
}

bool Tokens::IsWord(std::string_view word) const {
  return next.kind == Token::Kind::Word && SameName(next.text, word);
}

bool Tokens::IsSign(std::string_view sign) const {
  return next.kind == Token::Kind::Sign && next.text == sign;
}

bool Tokens::TakeWord(std::string_view word) {
  const bool is = IsWord(word);
  if (is) Take();
  return is;
}

bool Tokens::TakeSign(std::string_view sign) {
  const bool is = IsSign(sign);
  if (is) Take();
  return is;
}

Token Tokens::Cut() {
  while (!rest.empty() && IsBlank(rest.front())) rest.remove_prefix(1);
  if (rest.empty()) return {};
  const char first = rest.front();
  if (IsLetter(first)) return CutWhile(Token::Kind::Word, IsInWord);
  const bool isSigned = (first == '-' || first == '+') && rest.size() > 1 && IsDigit(rest[1]);
  if (IsDigit(first) || isSigned) return CutWhile(Token::Kind::Number, IsInNumber);
  return first == '\'' || first == '"' ? CutText() : CutSign();
}

Token Tokens::CutWhile(Token::Kind kind, bool (*belongs)(char c)) {
  std::size_t length = 1;
  while (length < rest.size() && belongs(rest[length])) ++length;
  Token token{kind, std::string(rest.substr(0, length))};
  rest.remove_prefix(length);
  return token;
}

Token Tokens::CutText() {
  const char quote = rest.front();
  Token token{Token::Kind::Text, ""};
  for (std::size_t i = 1; i < rest.size(); ++i) {
    const bool isDoubled = rest[i] == quote && i + 1 < rest.size() && rest[i + 1] == quote;
    if (rest[i] == quote && !isDoubled) {
      rest.remove_prefix(i + 1);
      return token;
    }
    if (isDoubled || rest[i] == '\\') ++i;
    if (i < rest.size()) token.text += rest[i];
  }
  Refuse("a text does not end");
}

Token Tokens::CutSign() {
  for (const std::string_view sign :
       {"<>", "!=", "<=", ">=", "<", ">", "=", "*", ",", ".", "(", ")", "[", "]"}) {
    if (rest.substr(0, sign.size()) != sign) continue;
    rest.remove_prefix(sign.size());
    return {Token::Kind::Sign, std::string(sign)};
  }
  Refuse(std::string("\"") + rest.front() + "\" has no meaning");
}

}  // namespace tools::agent::query
