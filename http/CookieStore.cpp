// SPDX-License-Identifier: MIT
#include "http/CookieStore.h"

#include <curl/curl.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace KELib {
namespace Http {

namespace {

using Lines = std::vector<std::string>;

// What makes two lines the same cookie. A line has seven fields behind tabs: domain, whether
// domains below it count, path, whether it is secure, end of life, name, value.
std::string KeyOf(const std::string& line) {
  std::string key;
  std::istringstream fields(line);
  std::string text;
  for (int field = 0; std::getline(fields, text, '\t'); ++field) {
    if (field == 0 || field == 2 || field == 5) key += text + '\t';
  }
  return key;
}

Lines::iterator Find(Lines& lines, const std::string& key) {
  return std::find_if(lines.begin(), lines.end(),
                      [&](const std::string& line) { return KeyOf(line) == key; });
}

Lines LinesOf(void* easy) {
  curl_slist* list = nullptr;
  Lines lines;
  if (curl_easy_getinfo(easy, CURLINFO_COOKIELIST, &list) != CURLE_OK) return lines;
  for (const curl_slist* line = list; line != nullptr; line = line->next) {
    lines.emplace_back(line->data);
  }
  curl_slist_free_all(list);
  return lines;
}

}  // namespace

bool CookieStore::IsNeeded() {
  static const bool needed = curl_version_info(CURLVERSION_NOW)->version_num >= 0x080000;
  return needed;
}

void CookieStore::Load(void* easy, HandleCookies& known) {
  const std::lock_guard<std::mutex> lock(mutex);
  if (known.generation == generation) return;
  if (curl_easy_setopt(easy, CURLOPT_COOKIELIST, "ALL") != CURLE_OK) return;
  for (const std::string& line : lines) {
    if (curl_easy_setopt(easy, CURLOPT_COOKIELIST, line.c_str()) != CURLE_OK) return;
  }
  known.lines = lines;
  known.generation = generation;
}

void CookieStore::Save(void* easy, HandleCookies& known) {
  Lines now = LinesOf(easy);
  if (now == known.lines) return;
  const std::lock_guard<std::mutex> lock(mutex);
  for (const std::string& line : known.lines) {  // removed by the server, or out of date
    const std::string key = KeyOf(line);
    if (Find(now, key) != now.end()) continue;
    const auto held = Find(lines, key);
    if (held != lines.end()) lines.erase(held);
  }
  for (const std::string& line : now) {
    if (std::find(known.lines.begin(), known.lines.end(), line) != known.lines.end()) continue;
    const auto held = Find(lines, KeyOf(line));
    if (held != lines.end()) {
      *held = line;
    } else {
      lines.push_back(line);
    }
  }
  ++generation;
  known.lines = std::move(now);
  known.generation = known.lines == lines ? generation : 0;
}

}  // namespace Http
}  // namespace KELib
