// hostrun/host/declaration.cpp - reads declarations of the host language.
#include "hostrun/host/declaration.h"

#include <cctype>
#include <charconv>
#include <cstdlib>

#include "hostrun/host/call.h"
#include "hostrun/host/text.h"

namespace hostrun {
namespace {

bool IsNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}
bool IsNameCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool AtEnd() {
    SkipBlanks();
    return at_ == text_.size();
  }

  bool Take(char wanted) {
    SkipBlanks();
    if (at_ >= text_.size() || text_[at_] != wanted) return false;
    ++at_;
    return true;
  }

  void Want(char wanted, const char* where) {
    if (!Take(wanted)) Fail(std::string("'") + wanted + "' " + where);
  }

  std::string Name(const char* what) {
    SkipBlanks();
    const std::size_t start = at_;
    if (at_ < text_.size() && IsNameStart(text_[at_])) {
      while (at_ < text_.size() && IsNameCharacter(text_[at_])) ++at_;
    }
    if (at_ == start) Fail(what);
    return std::string(text_.substr(start, at_ - start));
  }

  // Takes the word if it stands here as a whole.
  bool TakeWord(std::string_view word) {
    SkipBlanks();
    const std::string_view here = text_.substr(at_, word.size());
    if (!SameName(here, word)) return false;
    const std::size_t end = at_ + word.size();
    if (end < text_.size() && IsNameCharacter(text_[end])) return false;
    at_ = end;
    return true;
  }

  // Takes the word only where a name follows it: a parameter may be called like a modifier.
  bool TakeModifier(std::string_view word) {
    const std::size_t start = at_;
    if (TakeWord(word)) {
      SkipBlanks();
      if (at_ < text_.size() && IsNameStart(text_[at_]) && !AtWord("as")) return true;
    }
    at_ = start;
    return false;
  }

  Value Literal() {
    SkipBlanks();
    if (Take('"')) return StringLiteral();
    if (Take('&')) return HexLiteral();
    if (TakeWord("true")) return Value::Boolean(true);
    if (TakeWord("false")) return Value::Boolean(false);
    if (TakeWord("nil")) return Value::Nil();
    const std::size_t start = at_;
    if (at_ < text_.size() && (text_[at_] == '-' || text_[at_] == '+')) ++at_;
    bool real = false;
    while (at_ < text_.size() &&
           (std::isdigit(static_cast<unsigned char>(text_[at_])) != 0 || text_[at_] == '.')) {
      real = real || text_[at_] == '.';
      ++at_;
    }
    const std::string digits(text_.substr(start, at_ - start));
    if (digits.find_first_of("0123456789") == std::string::npos)
      Fail("a number, a string, true, false or nil");
    if (real) return Value::Double(std::strtod(digits.c_str(), nullptr));
    const std::int64_t number = std::strtoll(digits.c_str(), nullptr, 10);
    const auto narrow = static_cast<std::int32_t>(number);
    return narrow == number ? Value::Integer(narrow) : Value::Int64(number);
  }

  [[noreturn]] void Fail(const std::string& wanted) {
    SkipBlanks();
    const std::string found = at_ == text_.size() ? "its end" : "\"" + std::string(text_.substr(at_)) + "\"";
    throw DeclarationError("wanted " + wanted + ", found " + found + " at position " +
                           std::to_string(at_ + 1));
  }

 private:
  void SkipBlanks() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0) ++at_;
  }

  bool AtWord(std::string_view word) {
    const std::size_t start = at_;
    const bool there = TakeWord(word);
    at_ = start;
    return there;
  }

  Value StringLiteral() {
    const std::size_t end = text_.find('"', at_);
    if (end == std::string_view::npos) Fail("a closing '\"'");
    const std::string_view inner = text_.substr(at_, end - at_);
    at_ = end + 1;
    return Value::Text(inner);
  }

  Value HexLiteral() {
    const char32_t kind = at_ < text_.size() ? LowerCase(static_cast<unsigned char>(text_[at_])) : U'\0';
    if (kind != U'h' && kind != U'c') Fail(kHexWanted);
    std::uint32_t number = 0;
    const char* const end = text_.data() + text_.size();
    const auto [stop, error] = std::from_chars(text_.data() + at_ + 1, end, number, 16);
    if (error != std::errc()) Fail(kHexWanted);
    at_ = static_cast<std::size_t>(stop - text_.data());
    return kind == U'c' ? Value::Color(number) : Value::Integer(static_cast<std::int32_t>(number));
  }

  static constexpr const char* kHexWanted = "hexadecimal digits after &h or &c";

  std::string_view text_;
  std::size_t at_ = 0;
};

const Type* ReadType(Reader& in) {
  const Type* type = TypeNamed(in.Name("a type"));
  if (in.Take('(')) {
    in.Want(')', "after '(' of an array type");
    type = ArrayOf(type);
  }
  return type;
}

Value DefaultAs(Reader& in, const Type& type) {
  Value value = in.Literal();
  const bool number =
      value.kind() == Kind::Integer || value.kind() == Kind::Int64 || value.kind() == Kind::Double;
  switch (type.kind) {
    case Kind::Double:
    case Kind::Single:
      if (number) return Value::Double(value.AsReal());
      break;
    case Kind::Integer:
      if (number) return Value::Integer(static_cast<std::int32_t>(value.AsInt64()));
      break;
    case Kind::Int64:
      if (number) return Value::Int64(value.AsInt64());
      break;
    case Kind::Object:
    case Kind::Array:
      if (value.IsNil()) return value;
      break;
    case Kind::Variant:
      return value;
    default:
      if (value.kind() == type.kind) return value;
  }
  in.Fail("a default value of type " + type.name + " before this");
}

Parameter ReadParameter(Reader& in) {
  Parameter parameter;
  for (bool more = true; more;) {
    more = false;
    if (in.TakeModifier("byref")) more = parameter.byref = true;
    if (in.TakeModifier("byval") || in.TakeModifier("optional")) more = true;
    if (in.TakeModifier("paramarray")) more = parameter.paramArray = true;
    if (in.TakeModifier("assigns")) more = parameter.assigns = true;
  }
  parameter.name = in.Name("a parameter name");
  bool array = parameter.paramArray;
  if (in.Take('(')) {
    in.Want(')', "after '(' of an array parameter");
    array = true;
  }
  if (!in.TakeWord("as")) in.Fail("'as' and a type after parameter " + parameter.name);
  parameter.type = ReadType(in);
  if (array) parameter.type = ArrayOf(parameter.type);
  if (in.Take('=')) parameter.defaultValue = DefaultAs(in, *parameter.type);
  return parameter;
}

}  // namespace

std::size_t Signature::RequiredCount() const {
  std::size_t count = 0;
  for (const Parameter& parameter : parameters) {
    if (!parameter.defaultValue && !parameter.paramArray) ++count;
  }
  return count;
}

std::string Signature::Text() const {
  std::string text = name;
  if (!parameters.empty()) {
    text += '(';
    for (const Parameter& parameter : parameters) {
      if (text.back() != '(') text += ", ";
      if (parameter.byref) text += "byref ";
      if (parameter.assigns) text += "assigns ";
      if (parameter.paramArray) text += "paramarray ";
      text += parameter.name + " as ";
      text += parameter.paramArray ? parameter.type->element->name : parameter.type->name;
      if (parameter.defaultValue) text += " = ...";
    }
    text += ')';
  }
  if (result->kind != Kind::Nothing) text += " as " + result->name;
  return text;
}

Signature ParseSignature(std::string_view declaration) {
  Reader in(declaration);
  Signature signature;
  if (!in.TakeModifier("sub")) in.TakeModifier("function");
  signature.name = in.Name("a method name");
  if (in.Take('(') && !in.Take(')')) {
    do {
      if (signature.TakesAnyCount()) in.Fail("no parameter after a parameter array");
      if (signature.parameters.size() == kMostParameters) {
        in.Fail("at most " + std::to_string(kMostParameters) + " parameters");
      }
      signature.parameters.push_back(ReadParameter(in));
    } while (in.Take(','));
    in.Want(')', "after the parameters");
  }
  signature.result = in.TakeWord("as") ? ReadType(in) : TypeOf(Kind::Nothing);
  if (!in.AtEnd()) in.Fail("the declaration's end");
  return signature;
}

ConstantDeclaration ParseConstant(std::string_view declaration) {
  Reader in(declaration);
  ConstantDeclaration constant;
  constant.name = in.Name("a constant's name");
  const Type* declared = in.TakeWord("as") ? ReadType(in) : nullptr;
  in.Want('=', "after a constant's name");
  constant.value = declared == nullptr ? in.Literal() : DefaultAs(in, *declared);
  constant.type = declared == nullptr ? TypeOf(constant.value.kind()) : declared;
  if (!in.AtEnd()) in.Fail("the declaration's end");
  return constant;
}

bool SameSignature(const Signature& a, const Signature& b) {
  if (!SameName(a.name, b.name) || a.result != b.result || a.parameters.size() != b.parameters.size())
    return false;
  for (std::size_t i = 0; i < a.parameters.size(); ++i) {
    if (a.parameters[i].type != b.parameters[i].type || a.parameters[i].byref != b.parameters[i].byref)
      return false;
  }
  return true;
}

}  // namespace hostrun
