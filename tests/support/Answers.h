// SPDX-License-Identifier: MIT
//
// Case files of questions: a row is the name of a question, its arguments and the answer. In them
// \n, \r, \t, \\ and \xNN stand for the byte. An answer that is an exception of the library reads
// as Described() says.
//
//   ExpectAnswers(KECPP_TEST_DATA "/cases/url.txt", {{"parse", [](const Row& row) { ... }}});
#ifndef KECPP_TESTS_SUPPORT_ANSWERS_H
#define KECPP_TESTS_SUPPORT_ANSWERS_H

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>

#include "support/Rows.h"
#include "support/Thrown.h"

inline std::string Unescaped(const std::string& field) {
  static const std::map<char, char> kNamed{{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'\\', '\\'}};
  std::string text;
  for (std::size_t at = 0; at < field.size(); ++at) {
    if (field[at] != '\\') {
      text += field[at];
    } else if (field.at(++at) == 'x') {
      text += static_cast<char>(std::stoi(field.substr(at + 1, 2), nullptr, 16));
      at += 2;
    } else {
      text += kNamed.at(field[at]);
    }
  }
  return text;
}

// The arguments of a question are row[1], row[2] and so on. Every question has to be asked.
using Questions = std::map<std::string, std::function<std::string(const Row& row)>>;

inline void ExpectAnswers(const std::string& path, const Questions& questions) {
  std::set<std::string> asked;
  for (Row row : ReadRows(path)) {
    for (std::string& field : row) field = Unescaped(field);
    ASSERT_TRUE(row.size() > 1 && questions.count(row[0]) > 0) << row[0];
    std::string answer;
    const std::string thrown = Thrown([&] { answer = questions.at(row[0])(row); });
    EXPECT_EQ(row.back(), thrown == "nothing" ? answer : thrown) << row[0] << ": " << row[1];
    asked.insert(row[0]);
  }
  EXPECT_EQ(questions.size(), asked.size()) << "questions never asked in " << path;
}

// The answers to steps ("one; another"), joined in the same way.
template <typename Answer>
std::string Stepwise(const std::string& steps, Answer answer) {
  std::string all;
  for (const std::string& step : Split(steps, ";")) all += "; " + answer(step);
  return all.substr(2);
}

#endif
