// SPDX-License-Identifier: MIT
//
// Case files: a sequence of sections, each headed by a line "== NAME [ARGUMENT [SECOND]]"; text
// before the first one says what the case is for. Empty lines say nothing.
#ifndef KECPP_TESTS_SUPPORT_CASEFILE_H
#define KECPP_TESTS_SUPPORT_CASEFILE_H

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct Section {
  std::string name, argument, second;
  std::string text;  // lines, each with its end
};

inline std::vector<Section> ReadCase(const std::filesystem::path& file) {
  std::ifstream in(file);
  std::vector<Section> sections;
  for (std::string line; std::getline(in, line);) {
    if (line.compare(0, 3, "== ") == 0) {
      Section& section = sections.emplace_back();
      std::istringstream(line.substr(3)) >> section.name >> section.argument >> section.second;
    } else if (!sections.empty() && !line.empty()) {
      sections.back().text += line + "\n";
    }
  }
  return sections;
}

// All files of a folder, in the order of their names.
inline std::vector<std::filesystem::path> CaseFiles(const std::string& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

#endif
