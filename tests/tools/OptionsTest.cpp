// SPDX-License-Identifier: MIT
#include "tools/inventory/Options.h"

#include <gtest/gtest.h>

#include "support/Answers.h"

namespace tools::inventory {
namespace {

std::string Parsed(const std::string& words) {
  std::vector<const char*> arguments = {"kecpp-inventory"};
  const Row split = words.empty() ? Row{} : Split(words, " ");
  for (const std::string& word : split) arguments.push_back(word.c_str());
  Options options;
  const auto status = ParseOptions(static_cast<int>(arguments.size()), arguments.data(), options);
  if (status) return std::to_string(*status);
  std::string text = options.format == Format::json ? " json" : "";
  for (const Kind* kind : options.lists) text += std::string(" ") + kind->name;
  return (text + (options.wantsAuthorization ? " asked" : "")).substr(1);
}

TEST(Options, AreReadAsWritten) {
  ExpectAnswers(KECPP_TEST_DATA "/options.txt",
                {{"parse", [](const Row& row) { return Parsed(row[1]); }},
                 {"task", [](const Row& row) {
                    const auto call = ParseTaskCall(row[1]);
                    return call ? call->method + " " + call->type + " " + call->value : "none";
                  }}});
}

}  // namespace
}  // namespace tools::inventory
