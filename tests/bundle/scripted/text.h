// tests/bundle/scripted/text.h - text in the encodings that host and platform name by number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace scripted {

// Bytes in the encoding as UTF-16, or nothing when the bytes are malformed or the encoding is unknown.
std::optional<std::u16string> Decode(std::string_view bytes, std::uint32_t encoding);

// UTF-16 as bytes of the encoding, or nothing when a character has no place in it.
std::optional<std::string> Encode(std::u16string_view text, std::uint32_t encoding);

// For event texts: lossy, never fails.
std::string ToUTF8(std::u16string_view text);

}  // namespace scripted
