// SPDX-License-Identifier: MIT
//
// Cuts a query's text into words, numbers, strings and signs.
//
// Thread safety: none. The text outlives the object.
#ifndef KECPP_TOOLS_AGENT_QUERY_TOKENS_H
#define KECPP_TOOLS_AGENT_QUERY_TOKENS_H

#include <string>
#include <string_view>

namespace tools::agent::query {

struct Token {
  enum class Kind { End, Word, Number, Text, Sign };

  Kind kind = Kind::End;
  std::string text;  // of a Text without its quotes
};

// Throws OperationError, "invalid query".
[[noreturn]] void Refuse(const std::string& why);

class Tokens {
 public:
  // Reads the first one. Throws OperationError for a text that cannot be cut, as Take does.
  explicit Tokens(std::string_view text) : rest(text) { Take(); }

  // The next one, which is not taken yet.
  const Token& Next() const { return next; }
  Token Take();

  // Whether the next one is that word, without letter case, or that sign.
  bool IsWord(std::string_view word) const;
  bool IsSign(std::string_view sign) const;

  // Takes it when it is.
  bool TakeWord(std::string_view word);
  bool TakeSign(std::string_view sign);

 private:
  Token Cut();
  Token CutWhile(Token::Kind kind, bool (*belongs)(char c));
  Token CutText();
  Token CutSign();

  std::string_view rest;
  Token next;
};

}  // namespace tools::agent::query

#endif
