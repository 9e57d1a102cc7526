// SPDX-License-Identifier: MIT
#include "tools/agent/Users.h"

#include <crypt.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <strings.h>
#include <time.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>

namespace tools::agent {
namespace {

constexpr std::size_t MAX_CREDENTIALS = 1024;
constexpr std::chrono::seconds SILENCE(10);

bool SameBytes(const std::string& a, const std::string& b) {
  return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

// Of this thread, in nanoseconds.
long long ProcessorTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000LL + time.tv_nsec;
}

// Empty when crypt does not know the form of the hash.
std::string Hash(const std::string& password, const std::string& setting) {
  const auto data = std::make_unique<crypt_data>();  // 32 KiB
  const char* hash = crypt_r(password.c_str(), setting.c_str(), data.get());
  return hash && hash[0] != '*' ? hash : "";
}

// "NAME:HASH" or nothing for a line without a user.
std::optional<std::pair<std::string, std::string>> ReadLine(const std::string& line) {
  if (line.empty() || line[0] == '#') return {};
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos || colon == 0) throw std::runtime_error("a line is not NAME:HASH");
  const std::string rest = line.substr(colon + 1);
  const std::string hash = rest.substr(0, rest.find(':'));
  // crypt takes a setting without a hash, and many other texts, for the setting of an older form.
  // What it returns is then longer.
  if (hash.empty() || Hash("", hash).size() != hash.size()) {
    throw std::runtime_error("no hash that crypt knows for " + line.substr(0, colon));
  }
  return {{line.substr(0, colon), hash}};
}

// "user:password" of a header's value; nothing when it is of another kind or broken.
std::optional<std::string> Credentials(const std::string& authorization) {
  constexpr std::size_t SCHEME = 6;
  if (strncasecmp(authorization.c_str(), "Basic ", SCHEME) != 0) return {};
  const std::string encoded = authorization.substr(SCHEME);
  if (encoded.empty() || encoded.size() > MAX_CREDENTIALS || encoded.size() % 4 != 0) return {};
  std::string decoded(encoded.size() / 4 * 3, '\0');
  const int length = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(decoded.data()),
                                     reinterpret_cast<const unsigned char*>(encoded.data()),
                                     static_cast<int>(encoded.size()));
  if (length < 0) return {};
  // The decoder counts the padding's bytes in.
  std::size_t padding = 0;
  while (padding < 2 && encoded[encoded.size() - 1 - padding] == '=') ++padding;
  decoded.resize(static_cast<std::size_t>(length) - padding);
  const bool valid =
      decoded.find('\0') == std::string::npos && decoded.find(':') != std::string::npos;
  return valid ? std::optional<std::string>(decoded) : std::nullopt;
}

}  // namespace

Users::Users(const std::string& file) : path(file), current(Read(file)) {
  if (RAND_bytes(secret.data(), static_cast<int>(secret.size())) != 1) {
    throw std::runtime_error("no random numbers");
  }
}

void Users::ReadAgain() {
  std::shared_ptr<Table> table = Read(path);
  std::lock_guard<std::mutex> lock(mutex);
  current = std::move(table);
}

std::shared_ptr<Users::Table> Users::Read(const std::string& file) {
  std::ifstream lines(file);
  if (!lines) throw std::runtime_error("cannot read " + file);
  auto table = std::make_shared<Table>();
  long long highest = -1;
  std::string line;
  while (std::getline(lines, line)) {
    try {
      const long long start = ProcessorTime();
      const auto user = ReadLine(line);  // hashes once
      const long long cost = ProcessorTime() - start;
      if (!user) continue;
      table->hashes.insert(*user);
      if (cost > highest) table->costliest = user->second;
      highest = std::max(cost, highest);
    } catch (const std::runtime_error& error) {
      throw std::runtime_error(file + ": " + error.what());
    }
  }
  if (table->hashes.empty()) throw std::runtime_error(file + ": no users");
  return table;
}

bool Users::Accepts(const std::string& authorization, const std::string& peer) {
  const bool known = Knows(authorization);
  if (!known && !authorization.empty()) Report(peer);  // browsers come without at first
  return known;
}

bool Users::Knows(const std::string& authorization) {
  const auto credentials = Credentials(authorization);
  if (!credentials) return false;
  const std::string user = credentials->substr(0, credentials->find(':'));
  const Digest digest = DigestOf(*credentials);
  std::shared_ptr<Table> table;
  {
    std::lock_guard<std::mutex> lock(mutex);
    table = current;
    const auto known = table->accepted.find(user);
    if (known != table->accepted.end() &&
        CRYPTO_memcmp(known->second.data(), digest.data(), digest.size()) == 0) {
      return true;
    }
  }
  if (!Check(*table, user, credentials->substr(user.size() + 1))) return false;
  std::lock_guard<std::mutex> lock(mutex);
  table->accepted[user] = digest;
  return true;
}

// An unknown user costs as much time as the costliest, so that names cannot be found out by it.
bool Users::Check(const Table& table, const std::string& user, const std::string& password) {
  const auto found = table.hashes.find(user);
  const std::string& expected = found != table.hashes.end() ? found->second : table.costliest;
  std::lock_guard<std::mutex> lock(hashing);
  return SameBytes(Hash(password, expected), expected) && found != table.hashes.end();
}

void Users::Report(const std::string& peer) {
  std::lock_guard<std::mutex> lock(mutex);
  if (Clock::now() < silentUntil) {
    ++untold;
    return;
  }
  std::cerr << "kecpp-agent: wrong user name or password from " + peer +
                   (untold > 0
                        ? ", and " + std::to_string(untold) + " more since the last such line"
                        : "") +
                   "\n";
  silentUntil = Clock::now() + SILENCE;
  untold = 0;
}

Users::Digest Users::DigestOf(const std::string& credentials) const {
  Digest digest{};
  HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
       reinterpret_cast<const unsigned char*>(credentials.data()), credentials.size(),
       digest.data(), nullptr);
  return digest;
}

}  // namespace tools::agent
