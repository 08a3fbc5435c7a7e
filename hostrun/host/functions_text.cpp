// hostrun/host/functions_text.cpp - the global functions of the host language that work on text.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "bundle/host/types.h"
#include "hostrun/host/arrays.h"
#include "hostrun/host/exceptions.h"
#include "hostrun/host/functions.h"
#include "hostrun/host/records.h"
#include "hostrun/host/registry.h"
#include "hostrun/host/strings.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

constexpr int kShownDigits = 7;
constexpr double kLargestShownInFull = 1e15;

HostString* FromCodePoints(std::u32string_view text) {
  return NewString(Encode(text, qvx::kEncodingUTF8));
}

std::size_t Count(std::int32_t n) {
  return n < 0 ? 0 : static_cast<std::size_t>(n);
}

std::u32string Folded(std::u32string text) {
  std::transform(text.begin(), text.end(), text.begin(), LowerCase);
  return text;
}

std::int32_t Len(HostString* s) {
  return static_cast<std::int32_t>(CodePointsOf(s).size());
}
std::int32_t LenB(HostString* s) {
  return s == nullptr ? 0 : s->length;
}

HostString* Mid(HostString* s, std::int32_t start, std::int32_t length) {
  const std::u32string text = CodePointsOf(s);
  const std::size_t first = start < 1 ? 0 : static_cast<std::size_t>(start) - 1;
  return first >= text.size() ? nullptr
                              : FromCodePoints(std::u32string_view(text).substr(first, Count(length)));
}

HostString* Left(HostString* s, std::int32_t count) {
  return FromCodePoints(std::u32string_view(CodePointsOf(s)).substr(0, Count(count)));
}

HostString* Right(HostString* s, std::int32_t count) {
  const std::u32string text = CodePointsOf(s);
  return FromCodePoints(std::u32string_view(text).substr(text.size() - std::min(text.size(), Count(count))));
}

template <class Map>
HostString* Mapped(HostString* s, Map map) {
  std::u32string text = CodePointsOf(s);
  std::transform(text.begin(), text.end(), text.begin(), map);
  return FromCodePoints(text);
}
HostString* Uppercase(HostString* s) {
  return Mapped(s, UpperCase);
}
HostString* Lowercase(HostString* s) {
  return Mapped(s, LowerCase);
}

bool IsBlank(char32_t c) {
  return c <= U' ' || c == 0xA0;
}

HostString* Trimmed(HostString* s, bool left, bool right) {
  const std::u32string text = CodePointsOf(s);
  std::size_t first = 0;
  std::size_t last = text.size();
  while (left && first < last && IsBlank(text[first])) ++first;
  while (right && last > first && IsBlank(text[last - 1])) --last;
  return FromCodePoints(std::u32string_view(text).substr(first, last - first));
}
HostString* Trim(HostString* s) {
  return Trimmed(s, true, true);
}
HostString* LTrim(HostString* s) {
  return Trimmed(s, true, false);
}
HostString* RTrim(HostString* s) {
  return Trimmed(s, false, true);
}

std::int32_t InStrFrom(std::int32_t start, HostString* source, HostString* find) {
  const std::size_t at =
      Folded(CodePointsOf(source)).find(Folded(CodePointsOf(find)), start < 1 ? 0 : Count(start) - 1);
  return at == std::u32string::npos ? 0 : static_cast<std::int32_t>(at) + 1;
}
std::int32_t InStr(HostString* source, HostString* find) {
  return InStrFrom(1, source, find);
}

HostString* Replaced(HostString* source, HostString* find, HostString* with, bool all) {
  const std::u32string text = CodePointsOf(source);
  const std::u32string folded = Folded(text);
  const std::u32string wanted = Folded(CodePointsOf(find));
  const std::u32string replacement = CodePointsOf(with);
  if (wanted.empty()) return StringRef::Share(source).Detach();
  std::u32string out;
  std::size_t from = 0;
  for (std::size_t at = 0; (at = folded.find(wanted, from)) != std::u32string::npos;) {
    out.append(text, from, at - from).append(replacement);
    from = at + wanted.size();
    if (!all) break;
  }
  return FromCodePoints(out.append(text, from));
}
HostString* Replace(HostString* s, HostString* find, HostString* with) {
  return Replaced(s, find, with, false);
}
HostString* ReplaceAll(HostString* s, HostString* find, HostString* with) {
  return Replaced(s, find, with, true);
}

// What stands between the marks; each character alone where there is no mark, nothing in an empty text.
std::vector<std::string> FieldsOf(HostString* source, HostString* delimiter) {
  std::vector<std::string> fields;
  const std::string text = Utf8Of(source);
  const std::string mark = Utf8Of(delimiter);
  if (text.empty()) return fields;
  if (mark.empty()) {
    for (const char32_t c : CodePointsOf(source)) fields.push_back(Encode({&c, 1}, qvx::kEncodingUTF8));
    return fields;
  }
  std::size_t start = 0;
  for (std::size_t at = 0; (at = text.find(mark, start)) != std::string::npos; start = at + mark.size()) {
    fields.push_back(text.substr(start, at - start));
  }
  fields.push_back(text.substr(start));
  return fields;
}

Object* Split(HostString* source, HostString* delimiter) {
  ObjectRef array = ObjectRef::Adopt(NewArray(*TypeOf(Kind::String), -1));
  for (const std::string& field : FieldsOf(source, delimiter)) {
    ArrayDataOf(array.get()).items.push_back(Value::Text(field));
  }
  return array.Detach();
}

// From 1; empty where there is no such field.
HostString* NthField(HostString* source, HostString* delimiter, std::int32_t number) {
  const std::vector<std::string> fields = FieldsOf(source, delimiter);
  if (number < 1 || static_cast<std::size_t>(number) > fields.size()) return nullptr;
  return NewString(fields[static_cast<std::size_t>(number) - 1]);
}

std::int32_t CountFields(HostString* source, HostString* delimiter) {
  return static_cast<std::int32_t>(FieldsOf(source, delimiter).size());
}

HostString* Join(Object* array, HostString* delimiter) {
  if (array == nullptr) return nullptr;
  std::string text;
  bool first = true;
  for (const Value& item : ArrayDataOf(array).items) {
    if (!first) text += Utf8Of(delimiter);
    first = false;
    text += Utf8Of(item.string());
  }
  return NewString(text);
}

template <unsigned Base>
HostString* InBase(std::int64_t number) {
  std::array<char, 65> digits{};
  const bool narrow = number >= INT32_MIN && number < 0;
  const std::uint64_t bits = narrow ? static_cast<std::uint32_t>(number) : static_cast<std::uint64_t>(number);
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), bits, int{Base});
  std::transform(digits.data(), end, digits.data(),
                 [](char c) { return c >= 'a' ? static_cast<char>(c - 32) : c; });
  return NewString({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

HostString* Chr(std::int32_t code) {
  const auto c = static_cast<char32_t>(code);
  if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
    RaiseHostException("InvalidArgumentException", "No character has the code " + std::to_string(code) + ".");
  }
  return FromCodePoints({&c, 1});
}

std::int32_t Asc(HostString* s) {
  const std::u32string text = CodePointsOf(s);
  return text.empty() ? 0 : static_cast<std::int32_t>(text.front());
}

std::int32_t StrComp(HostString* a, HostString* b, std::int32_t mode) {
  return mode == 0 ? CompareStringsExactly(a, b) : CompareStrings(a, b);
}

// What stands before the first character that can't belong to a number.
double Val(HostString* s) {
  const std::string text = Utf8Of(s);
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  if (start == std::string::npos) return 0;
  if (text.size() > start + 1 && text[start] == '&') {
    static constexpr std::string_view kLetters = "hbo";
    static constexpr std::array kBases = {16, 2, 8};
    const std::size_t letter =
        kLetters.find(static_cast<char>(LowerCase(static_cast<unsigned char>(text[start + 1]))));
    if (letter == std::string_view::npos) return 0;
    std::uint64_t whole = 0;
    std::from_chars(text.data() + start + 2, text.data() + text.size(), whole, kBases[letter]);
    return static_cast<double>(whole);
  }
  double number = 0;
  const char* first = text.c_str() + start;
  if (*first == '+') ++first;
  const auto [end, error] =
      std::from_chars(first, text.c_str() + text.size(), number, std::chars_format::general);
  return error == std::errc() && std::isfinite(number) ? number : 0;
}

Value ValueOf(double number) {
  return Value::Double(number);
}
Value ValueOf(std::int64_t number) {
  return Value::Int64(number);
}

// "0" a digit always, "#" a digit if there is one, "." the point, "," thousands, "%" times 100, "-" or "+"
// the sign.
// Number: double, or std::int64_t so that none of its digits gets lost.
template <class Number>
HostString* Format(Number number, HostString* pattern) {
  const std::string form = Utf8Of(pattern);
  const std::size_t first = form.find_first_of("0#.,");
  if (first == std::string::npos || !std::isfinite(static_cast<double>(number))) {
    return NewString(ExactText(ValueOf(number)) + (first == std::string::npos ? form : std::string()));
  }
  const std::size_t last = form.find_last_of("0#.,") + 1;
  const std::string digits = form.substr(first, last - first);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::string whole = digits.substr(0, point);
  const std::string fraction = point < digits.size() ? digits.substr(point + 1) : std::string();
  // Wide enough for every digit of both kinds.
  const long double scaled =
      static_cast<long double>(number) * (form.find('%') != std::string::npos ? 100 : 1);

  const std::size_t lastRequired = fraction.find_last_of('0');
  const std::size_t required = lastRequired == std::string::npos ? 0 : lastRequired + 1;
  std::array<char, 512> buffer{};
  std::snprintf(buffer.data(), buffer.size(), "%.*Lf",
                static_cast<int>(std::min<std::size_t>(fraction.size(), 100)), std::fabs(scaled));
  std::string text = buffer.data();
  const std::size_t dot = std::min(text.find('.'), text.size());
  std::string after = dot < text.size() ? text.substr(dot + 1) : std::string();
  std::string before = text.substr(0, dot);
  while (after.size() > required && after.back() == '0') after.pop_back();
  const auto least = static_cast<std::size_t>(std::count(whole.begin(), whole.end(), '0'));
  if (before == "0" && least == 0) before.clear();
  if (before.size() < least) before.insert(0, least - before.size(), '0');
  if (whole.find(',') != std::string::npos) {
    for (std::size_t at = before.size(); at > 3; at -= 3) before.insert(at - 3, ",");
  }
  std::string prefix = form.substr(0, first);
  const bool zero = text.find_first_of("123456789") == std::string::npos;
  const bool negative = std::signbit(scaled) && !zero;
  if (const std::size_t sign = prefix.find_first_of("+-"); sign != std::string::npos) {
    const bool plus = prefix[sign] == '+';
    prefix.replace(sign, 1, negative ? "-" : plus ? "+" : "");
  } else if (negative) {
    prefix.insert(0, "-");
  }
  return NewString(prefix + before + (after.empty() ? "" : "." + after) + form.substr(last));
}

HostString* StrInteger(std::int64_t number) {
  return NewString(std::to_string(number));
}
HostString* StrDouble(double number) {
  return NewString(NumberText(number, kShownDigits));
}
HostString* StrVariant(Object* boxed) {
  return NewString(DisplayText(Unboxed(Value::Share(boxed))));
}
HostString* CStr(Object* boxed) {
  return NewString(ExactText(Unboxed(Value::Share(boxed))));
}

HostString* ConvertEncoding(HostString* s, std::int32_t encoding) {
  return ConvertString(s, static_cast<std::uint32_t>(encoding));
}
HostString* DefineEncoding(HostString* s, std::int32_t encoding) {
  return NewString(BytesOf(s), static_cast<std::uint32_t>(encoding));
}
std::int32_t Encoding(HostString* s) {
  return static_cast<std::int32_t>(EncodingOf(s));
}

std::array encodings = {
    qvx::REALconstant{"ASCII=&h0600", {}, {}},         qvx::REALconstant{"UTF8=&h08000100", {}, {}},
    qvx::REALconstant{"UTF16=&h0100", {}, {}},         qvx::REALconstant{"UTF32=&h0C000100", {}, {}},
    qvx::REALconstant{"WindowsLatin1=&h0500", {}, {}}, qvx::REALconstant{"MacRoman=0", {}, {}},
    qvx::REALconstant{"Unknown=&hFFFF", {}, {}},
};

}  // namespace

std::string NumberText(double number, int digits) {
  if (std::isnan(number)) return "NaN";
  if (std::isinf(number)) return number < 0 ? "-INF" : "INF";
  std::array<char, 64> buffer{};
  if (number == std::trunc(number) && std::fabs(number) < kLargestShownInFull) {
    std::snprintf(buffer.data(), buffer.size(), "%.0f", number == 0 ? 0.0 : number);
  } else {
    std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, number);
  }
  return buffer.data();
}

std::string DisplayText(const Value& value) {
  switch (value.kind()) {
    case Kind::Boolean:
      return value.boolean() ? "True" : "False";
    case Kind::Integer:
    case Kind::Int64:
      return std::to_string(value.int64());
    case Kind::Double:
      return NumberText(value.real(), kShownDigits);
    case Kind::Color: {
      std::array<char, 16> text{};
      std::snprintf(text.data(), text.size(), value.color() > 0xFFFFFF ? "&c%08X" : "&c%06X", value.color());
      return text.data();
    }
    case Kind::String:
      return Utf8Of(value.string());
    case Kind::Object:
      if (value.object()->cls != &ArrayClass()) return value.object()->cls->name;
      return ArrayDataOf(value.object()).element->name + "(" + std::to_string(UpperBound(value.object())) +
             ")";
    default:
      return "Nil";
  }
}

std::string ExactText(const Value& value) {
  if (value.kind() != Kind::Double || !std::isfinite(value.real())) return DisplayText(value);
  if (value.real() == std::trunc(value.real()) && std::fabs(value.real()) < kLargestShownInFull)
    return DisplayText(value);
  std::array<char, 64> buffer{};
  const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value.real());
  return {buffer.data(), end};
}

std::string LiteralText(const Value& value) {
  if (value.IsNil()) return "Nil";
  if (value.kind() != Kind::String) return ExactText(value);
  std::string text = "\"";
  for (const char c : Utf8Of(value.string())) {
    if (c == '"') text += '"';
    text += c;
  }
  return text + '"';
}

void RegisterTextFunctions() {
  Registry& registry = TheRegistry();
  const auto add = [&registry](const char* declaration, auto function) {
    registry.AddFunction(declaration, Proc(function));
  };
  add("Len(s as string) as integer", &Len);
  add("LenB(s as string) as integer", &LenB);
  add("Mid(s as string, start as integer, length as integer = 2147483647) as string", &Mid);
  add("Left(s as string, count as integer) as string", &Left);
  add("Right(s as string, count as integer) as string", &Right);
  add("Uppercase(s as string) as string", &Uppercase);
  add("Lowercase(s as string) as string", &Lowercase);
  add("Trim(s as string) as string", &Trim);
  add("LTrim(s as string) as string", &LTrim);
  add("RTrim(s as string) as string", &RTrim);
  add("InStr(source as string, find as string) as integer", &InStr);
  add("InStr(start as integer, source as string, find as string) as integer", &InStrFrom);
  add("Replace(source as string, find as string, replacement as string) as string", &Replace);
  add("ReplaceAll(source as string, find as string, replacement as string) as string", &ReplaceAll);
  add("Split(source as string, delimiter as string = \" \") as string()", &Split);
  add("NthField(source as string, delimiter as string, number as integer) as string", &NthField);
  add("CountFields(source as string, delimiter as string) as integer", &CountFields);
  add("Join(parts() as string, delimiter as string = \" \") as string", &Join);
  add("Hex(number as int64) as string", &InBase<16>);
  add("Bin(number as int64) as string", &InBase<2>);
  add("Oct(number as int64) as string", &InBase<8>);
  add("Chr(code as integer) as string", &Chr);
  add("Asc(s as string) as integer", &Asc);
  add("StrComp(a as string, b as string, mode as integer = 1) as integer", &StrComp);
  add("Val(s as string) as double", &Val);
  add("CDbl(s as string) as double", &Val);
  add("Format(number as int64, pattern as string) as string", &Format<std::int64_t>);
  add("Format(number as double, pattern as string) as string", &Format<double>);
  add("Str(number as int64) as string", &StrInteger);
  add("Str(number as double) as string", &StrDouble);
  add("Str(number as int64, pattern as string) as string", &Format<std::int64_t>);
  add("Str(number as double, pattern as string) as string", &Format<double>);
  add("Str(value as variant) as string", &StrVariant);
  add("CStr(value as variant) as string", &CStr);
  add("ConvertEncoding(s as string, encoding as integer) as string", &ConvertEncoding);
  add("DefineEncoding(s as string, encoding as integer) as string", &DefineEncoding);
  add("Encoding(s as string) as integer", &Encoding);

  static constinit qvx::REALclassDefinition record = ClassRecord("Encodings");
  SetConstants(record, encodings);
  registry.Register(record, Origin::Host);
}

}  // namespace hostrun
