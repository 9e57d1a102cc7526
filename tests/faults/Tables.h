// SPDX-License-Identifier: MIT
//
// The tables of a Markdown document.
#ifndef KECPP_TESTS_FAULTS_TABLES_H
#define KECPP_TESTS_FAULTS_TABLES_H

#include <map>
#include <string>
#include <vector>

namespace faults {

using Row = std::map<std::string, std::string>;  // by the column's title; without code quotes

// The rows of the table whose first column has this title, in order. Throws std::runtime_error
// when there is none.
std::vector<Row> ReadTable(const std::string& path, const std::string& title);

// What stands between separators, without the blanks around it; an em dash stands for nothing.
std::vector<std::string> Split(const std::string& text, const std::string& separator);

}  // namespace faults

#endif
