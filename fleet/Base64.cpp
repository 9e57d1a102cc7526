// SPDX-License-Identifier: MIT
#include "fleet/Base64.h"

#include <array>
#include <cstdint>

namespace kecpp::fleet {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 255;

constexpr std::array<std::uint8_t, 256> MakeValues() {
  std::array<std::uint8_t, 256> values{};
  for (auto& value : values) value = kNoDigit;
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}
constexpr std::array<std::uint8_t, 256> kValues = MakeValues();

std::uint32_t ByteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
}

}  // namespace

void AppendBase64(std::string& out, std::string_view bytes) {
  std::size_t to = out.size();
  out.resize(to + (bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::uint32_t group =
        ByteAt(bytes, at) << 16 | ByteAt(bytes, at + 1) << 8 | ByteAt(bytes, at + 2);
    out[to++] = kDigits[group >> 18];
    out[to++] = kDigits[group >> 12 & 63];
    out[to++] = at + 1 < bytes.size() ? kDigits[group >> 6 & 63] : '=';
    out[to++] = at + 2 < bytes.size() ? kDigits[group & 63] : '=';
  }
}

std::optional<std::string> DecodeBase64(std::string_view text) {
  if (text.size() % 4 != 0) return {};
  const std::size_t padding =
      text.size() < 4 || text.back() != '=' ? 0 : (text[text.size() - 2] == '=' ? 2 : 1);
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t at = 0; at < text.size(); at += 4) {
    const std::size_t digits = at + 4 == text.size() ? 4 - padding : 4;
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const std::uint8_t value =
          i < digits ? kValues[static_cast<unsigned char>(text[at + i])] : std::uint8_t{0};
      if (value == kNoDigit) return {};
      group = group << 6 | value;
    }
    for (std::size_t i = 1; i < digits; ++i) bytes += static_cast<char>(group >> (24 - 8 * i));
  }
  return bytes;
}

}  // namespace kecpp::fleet
