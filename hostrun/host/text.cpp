// hostrun/host/text.cpp - text in the host's encodings: decoding, encoding, case folding.
#include "hostrun/host/text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstring>
#include <cwctype>

#include "bundle/host/types.h"

namespace hostrun {
namespace {

// Code points of the bytes 0x80 to 0xFF.
constexpr std::array<char16_t, 128> kMacRoman = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7,
};
// Code points of the bytes 0x80 to 0x9F; above them Windows Latin 1 is Latin 1.
constexpr std::array<char16_t, 32> kWindowsLatin1 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

constexpr char32_t kReplacement = 0xFFFD;

bool IsSurrogate(char32_t c) {
  return c >= 0xD800 && c <= 0xDFFF;
}

// One UTF-8 sequence from `bytes` at `at`, which moves past it; kReplacement and `ok` false when malformed.
char32_t NextUtf8(std::string_view bytes, std::size_t& at, bool& ok) {
  const auto lead = static_cast<unsigned char>(bytes[at++]);
  if (lead < 0x80) return lead;
  int more = 0;
  char32_t c = 0;
  char32_t least = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    more = 1, c = lead & 0x1FU, least = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    more = 2, c = lead & 0x0FU, least = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    more = 3, c = lead & 0x07U, least = 0x10000;
  } else {
    ok = false;
    return kReplacement;
  }
  for (; more > 0; --more) {
    if (at >= bytes.size() || (static_cast<unsigned char>(bytes[at]) & 0xC0U) != 0x80) {
      ok = false;
      return kReplacement;
    }
    c = (c << 6U) | (static_cast<unsigned char>(bytes[at++]) & 0x3FU);
  }
  if (c < least || c > 0x10FFFF || IsSurrogate(c)) {
    ok = false;
    return kReplacement;
  }
  return c;
}

template <class Unit>
Unit UnitAt(std::string_view bytes, std::size_t index) {
  Unit unit;
  std::memcpy(&unit, bytes.data() + index * sizeof(Unit), sizeof(Unit));
  return unit;
}

std::u32string DecodeUtf16(std::string_view bytes, bool& ok) {
  std::u32string text;
  const std::size_t count = bytes.size() / 2;
  if (bytes.size() % 2 != 0) ok = false;
  for (std::size_t i = 0; i < count; ++i) {
    const char32_t unit = UnitAt<char16_t>(bytes, i);
    if (!IsSurrogate(unit)) {
      text += unit;
      continue;
    }
    const char32_t low = i + 1 < count ? UnitAt<char16_t>(bytes, i + 1) : 0;
    if (unit < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF) {
      text += static_cast<char32_t>(0x10000 + ((unit - 0xD800) << 10U) + (low - 0xDC00));
      ++i;
    } else {
      ok = false;
      text += kReplacement;
    }
  }
  return text;
}

std::u32string DecodeUtf32(std::string_view bytes, bool& ok) {
  std::u32string text;
  if (bytes.size() % 4 != 0) ok = false;
  for (std::size_t i = 0; i < bytes.size() / 4; ++i) {
    const auto c = UnitAt<char32_t>(bytes, i);
    const bool valid = c <= 0x10FFFF && !IsSurrogate(c);
    ok = ok && valid;
    text += valid ? c : kReplacement;
  }
  return text;
}

std::u32string DecodeBytes(std::string_view bytes, std::uint32_t encoding, bool& ok) {
  switch (encoding) {
    case qvx::kEncodingUTF16:
      return DecodeUtf16(bytes, ok);
    case qvx::kEncodingUTF32:
      return DecodeUtf32(bytes, ok);
    default:
      break;
  }
  std::u32string text;
  text.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    if (encoding == qvx::kEncodingUTF8) {
      text += NextUtf8(bytes, at, ok);
      continue;
    }
    const auto byte = static_cast<unsigned char>(bytes[at++]);
    if (byte < 0x80) {
      text += static_cast<char32_t>(byte);
    } else if (encoding == qvx::kEncodingASCII) {
      ok = false;
      text += kReplacement;
    } else if (encoding == qvx::kEncodingWindowsLatin1) {
      text += byte < 0xA0 ? kWindowsLatin1[byte - 0x80U] : static_cast<char32_t>(byte);
    } else {  // Mac Roman, which also stands for an unknown encoding
      text += kMacRoman[byte - 0x80U];
    }
  }
  return text;
}

void AppendUtf8(std::string& out, char32_t c) {
  const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | (c >> 6U)), put(0x80 | (c & 0x3FU));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12U)), put(0x80 | ((c >> 6U) & 0x3FU)), put(0x80 | (c & 0x3FU));
  } else {
    put(0xF0 | (c >> 18U)), put(0x80 | ((c >> 12U) & 0x3FU));
    put(0x80 | ((c >> 6U) & 0x3FU)), put(0x80 | (c & 0x3FU));
  }
}

template <std::size_t N>
char ByteFor(const std::array<char16_t, N>& table, char32_t c) {
  const auto* const found = std::find(table.begin(), table.end(), static_cast<char16_t>(c));
  return c <= 0xFFFF && found != table.end() ? static_cast<char>(0x80 + (found - table.begin())) : '?';
}

locale_t Utf8Locale() {
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return locale;
}

}  // namespace

std::optional<std::u32string> DecodeStrictly(std::string_view bytes, std::uint32_t encoding) {
  bool ok = true;
  std::u32string text = DecodeBytes(bytes, encoding, ok);
  if (!ok) return std::nullopt;
  return text;
}

std::u32string Decode(std::string_view bytes, std::uint32_t encoding) {
  bool ok = true;
  return DecodeBytes(bytes, encoding, ok);
}

std::u16string Utf16(std::u32string_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (const char32_t c : text) {
    if (c < 0x10000) {
      units += static_cast<char16_t>(c);
    } else {
      units += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10U));
      units += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FFU));
    }
  }
  return units;
}

std::string Encode(std::u32string_view text, std::uint32_t encoding) {
  std::string out;
  if (encoding == qvx::kEncodingUTF16) {
    const std::u16string units = Utf16(text);
    out.assign(reinterpret_cast<const char*>(units.data()), units.size() * 2);
    return out;
  }
  if (encoding == qvx::kEncodingUTF32) {
    out.assign(reinterpret_cast<const char*>(text.data()), text.size() * 4);
    return out;
  }
  out.reserve(text.size());
  for (const char32_t c : text) {
    if (encoding == qvx::kEncodingUTF8) {
      AppendUtf8(out, c);
    } else if (c < 0x80) {
      out += static_cast<char>(c);
    } else if (encoding == qvx::kEncodingASCII) {
      out += '?';
    } else if (encoding == qvx::kEncodingWindowsLatin1) {
      out += c >= 0xA0 && c <= 0xFF ? static_cast<char>(c) : ByteFor(kWindowsLatin1, c);
    } else {
      out += ByteFor(kMacRoman, c);
    }
  }
  return out;
}

char32_t LowerCase(char32_t c) {
  if (c < 0x80) return c >= 'A' && c <= 'Z' ? c + 32 : c;
  return Utf8Locale() == nullptr ? c
                                 : static_cast<char32_t>(towlower_l(static_cast<wint_t>(c), Utf8Locale()));
}

char32_t UpperCase(char32_t c) {
  if (c < 0x80) return c >= 'a' && c <= 'z' ? c - 32 : c;
  return Utf8Locale() == nullptr ? c
                                 : static_cast<char32_t>(towupper_l(static_cast<wint_t>(c), Utf8Locale()));
}

std::string LowerName(std::string_view name) {
  std::string lower(name);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return lower;
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerCase(static_cast<unsigned char>(x)) == LowerCase(static_cast<unsigned char>(y));
         });
}

}  // namespace hostrun
