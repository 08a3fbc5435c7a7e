// tests/bundle/scripted/text.cpp - text in the encodings that host and platform name by number.
#include "tests/bundle/scripted/text.h"

#include <cstring>

#include "bundle/host/types.h"

namespace scripted {
namespace {

constexpr char32_t kBad = 0xFFFFFFFF;

// Reads one code point of UTF-8 at `at` and steps over it; kBad for malformed bytes.
char32_t NextOfUTF8(std::string_view bytes, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(bytes[at]);
  const int more = lead < 0x80   ? 0
                   : lead < 0xC2 ? -1
                   : lead < 0xE0 ? 1
                   : lead < 0xF0 ? 2
                   : lead < 0xF5 ? 3
                                 : -1;
  if (more < 0 || at + static_cast<std::size_t>(more) >= bytes.size()) return kBad;
  char32_t point = more == 0 ? lead : lead & (0x3FU >> more);
  for (int i = 1; i <= more; ++i) {
    const auto next = static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)]);
    if ((next & 0xC0U) != 0x80) return kBad;
    point = (point << 6U) | (next & 0x3FU);
  }
  at += static_cast<std::size_t>(more) + 1;
  return point;
}

void Append(std::u16string& text, char32_t point) {
  if (point >= 0x10000) {
    text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10U));
    text += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FFU));
  } else {
    text += static_cast<char16_t>(point);
  }
}

// The code points of UTF-16; kBad for an unpaired surrogate.
std::u32string Points(std::u16string_view text) {
  std::u32string points;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i];
    const bool high = unit >= 0xD800 && unit < 0xDC00;
    const bool low = unit >= 0xDC00 && unit < 0xE000;
    if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
      points += static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10) + (text[i + 1] - 0xDC00));
      ++i;
    } else {
      points += (high || low) ? kBad : unit;
    }
  }
  return points;
}

void AppendUTF8(std::string& bytes, char32_t point) {
  const auto put = [&](char32_t value) { bytes += static_cast<char>(static_cast<unsigned char>(value)); };
  if (point < 0x80) {
    put(point);
  } else if (point < 0x800) {
    put(0xC0 | (point >> 6U));
    put(0x80 | (point & 0x3FU));
  } else if (point < 0x10000) {
    put(0xE0 | (point >> 12U));
    put(0x80 | ((point >> 6U) & 0x3FU));
    put(0x80 | (point & 0x3FU));
  } else {
    put(0xF0 | (point >> 18U));
    put(0x80 | ((point >> 12U) & 0x3FU));
    put(0x80 | ((point >> 6U) & 0x3FU));
    put(0x80 | (point & 0x3FU));
  }
}

}  // namespace

std::optional<std::u16string> Decode(std::string_view bytes, std::uint32_t encoding) {
  std::u16string text;
  switch (encoding) {
    case qvx::kEncodingUTF16:
      for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char16_t unit = 0;
        std::memcpy(&unit, bytes.data() + i, sizeof unit);
        text += unit;
      }
      return text;
    case qvx::kEncodingUTF32:
      for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
        char32_t point = 0;
        std::memcpy(&point, bytes.data() + i, sizeof point);
        if (point > 0x10FFFF) return std::nullopt;
        Append(text, point);
      }
      return text;
    case qvx::kEncodingUTF8:
      for (std::size_t i = 0; i < bytes.size();) {
        const char32_t point = NextOfUTF8(bytes, i);
        if (point == kBad) return std::nullopt;
        Append(text, point);
      }
      return text;
    case qvx::kEncodingASCII:
      for (const char byte : bytes) {
        if (static_cast<unsigned char>(byte) >= 0x80) return std::nullopt;
        text += static_cast<char16_t>(byte);
      }
      return text;
    // One byte, one character. The upper half of Mac Roman is not told apart from Latin 1: no test needs it.
    case qvx::kEncodingMacRoman:
    case qvx::kEncodingWindowsLatin1:
    case qvx::kEncodingUnknown:
      for (const char byte : bytes) text += static_cast<char16_t>(static_cast<unsigned char>(byte));
      return text;
    default:
      return std::nullopt;
  }
}

std::optional<std::string> Encode(std::u16string_view text, std::uint32_t encoding) {
  std::string bytes;
  if (encoding == qvx::kEncodingUTF16) {
    bytes.resize(text.size() * 2);
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return bytes;
  }
  for (const char32_t point : Points(text)) {
    if (point == kBad) return std::nullopt;
    switch (encoding) {
      case qvx::kEncodingUTF8:
        AppendUTF8(bytes, point);
        break;
      case qvx::kEncodingUTF32:
        bytes.append(reinterpret_cast<const char*>(&point), sizeof point);
        break;
      case qvx::kEncodingASCII:
        if (point >= 0x80) return std::nullopt;
        bytes += static_cast<char>(point);
        break;
      case qvx::kEncodingMacRoman:
      case qvx::kEncodingWindowsLatin1:
        if (point >= 0x100) return std::nullopt;
        bytes += static_cast<char>(static_cast<unsigned char>(point));
        break;
      default:
        return std::nullopt;
    }
  }
  return bytes;
}

std::string ToUTF8(std::u16string_view text) {
  std::string bytes;
  for (const char32_t point : Points(text)) AppendUTF8(bytes, point == kBad ? 0xFFFD : point);
  return bytes;
}

}  // namespace scripted
