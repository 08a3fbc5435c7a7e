// hostrun/host/text.h - text in the host's encodings: decoding, encoding, case folding.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hostrun {

// The code points of `bytes`; nothing when they are malformed in `encoding`.
std::optional<std::u32string> DecodeStrictly(std::string_view bytes, std::uint32_t encoding);

// The code points of `bytes`; U+FFFD stands for what is malformed.
std::u32string Decode(std::string_view bytes, std::uint32_t encoding);

// The bytes of `text` in `encoding`; "?" stands for what the encoding can't express.
std::string Encode(std::u32string_view text, std::uint32_t encoding);

// The UTF-16 units of `text`.
std::u16string Utf16(std::u32string_view text);

// Simple case mapping, one code point to one, whatever the machine's locale is.
char32_t LowerCase(char32_t c);
char32_t UpperCase(char32_t c);

// ASCII only: names in programs and declarations.
std::string LowerName(std::string_view name);
bool SameName(std::string_view a, std::string_view b);

}  // namespace hostrun
