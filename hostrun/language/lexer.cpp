// hostrun/language/lexer.cpp - cuts a program into words.
#include "hostrun/language/lexer.h"

#include <array>
#include <charconv>
#include <cmath>

#include "hostrun/host/text.h"

namespace hostrun {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool IsNameCharacter(char c) {
  return IsNameStart(c) || IsDigit(c);
}

// One pass over the text. at_ is the next byte to look at.
class Lexer {
 public:
  explicit Lexer(const Source& source) : text_(source.text()) {}

  std::vector<Token> Run(std::vector<ProgramError>& errors) {
    if (text_.starts_with("#!")) SkipToLineEnd();  // what makes the file a command
    if (text_.starts_with("\xFF\xFE") || text_.starts_with("\xFE\xFF")) {
      errors.emplace_back(PositionAt(0), "wanted text in UTF-8, found UTF-16; save it as UTF-8");
      at_ = text_.size();
    }
    while (at_ < text_.size()) {
      try {
        Next();
      } catch (const ProgramError& error) {
        errors.push_back(error);
        SkipToLineEnd();
      }
    }
    Add(TokenKind::EndOfLine, at_, at_);
    Add(TokenKind::EndOfFile, at_, at_);
    return std::move(tokens_);
  }

 private:
  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0'; }

  Position PositionAt(std::size_t offset) const {
    return {line_, static_cast<std::int32_t>(offset - lineStart_) + 1};
  }

  [[noreturn]] void Fail(std::size_t offset, const std::string& message) const {
    throw ProgramError(PositionAt(offset), message);
  }

  Token& Add(TokenKind kind, std::size_t start, std::size_t end) {
    Token token{kind, PositionAt(start), text_.substr(start, end - start), {}, {}};
    token.lower = LowerName(token.text);
    tokens_.push_back(std::move(token));
    return tokens_.back();
  }

  void NewLine() {
    ++at_;
    ++line_;
    lineStart_ = at_;
  }

  void SkipToLineEnd() { at_ = std::min(text_.find('\n', at_), text_.size()); }

  // A lone "_" at the end of a line, a comment allowed behind it: the statement goes on in the next line.
  bool TakeContinuation() {
    if (Peek() != '_' || IsNameCharacter(Peek(1))) return false;
    std::size_t end = at_ + 1;
    while (end < text_.size() && (text_[end] == ' ' || text_[end] == '\t')) ++end;
    const bool comment = end < text_.size() && (text_[end] == '\'' || text_.compare(end, 2, "//") == 0);
    if (!comment && end < text_.size() && text_[end] != '\n') return false;
    SkipToLineEnd();
    if (at_ < text_.size()) NewLine();
    return true;
  }

  // "a"&b: what touches the end of a value on its left is the operator, anything else begins a literal.
  bool JoinsTexts() const {
    const char before = at_ == 0 ? ' ' : text_[at_ - 1];
    return before == '"' || before == ')' || IsNameCharacter(before);
  }

  void Next() {
    const char c = Peek();
    if (c == '\n') {
      Add(TokenKind::EndOfLine, at_, at_);
      NewLine();
    } else if (c == ' ' || c == '\t') {
      ++at_;
    } else if (c == '\'' || (c == '/' && Peek(1) == '/')) {
      SkipToLineEnd();
    } else if (c == '"') {
      String();
    } else if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)))) {
      Number();
    } else if (c == '&' && IsNameStart(Peek(1)) && !JoinsTexts()) {
      Radix();
    } else if (IsNameStart(c)) {
      if (!TakeContinuation()) Name();
    } else {
      Operator();
    }
  }

  void Name() {
    const std::size_t start = at_;
    while (at_ < text_.size() && IsNameCharacter(text_[at_])) ++at_;
    const bool afterDot = !tokens_.empty() && tokens_.back().lower == ".";
    if (!afterDot && SameName(std::string_view(text_).substr(start, at_ - start), "rem"))
      return SkipToLineEnd();
    Add(TokenKind::Name, start, at_);
  }

  // A doubled quote inside stands for one.
  void String() {
    const std::size_t start = at_++;
    std::string content;
    for (;; ++at_) {
      if (at_ >= text_.size() || text_[at_] == '\n')
        Fail(start, "wanted a closing '\"' on this line, found its end");
      if (text_[at_] == '"') {
        if (Peek(1) != '"') break;
        ++at_;
      }
      content += text_[at_];
    }
    ++at_;
    if (!DecodeStrictly(content, qvx::kEncodingUTF8)) Fail(start, "wanted text in UTF-8, found other bytes");
    Add(TokenKind::Literal, start, at_).literal = Value::Text(content);
  }

  void Number() {
    const std::size_t start = at_;
    bool real = false;
    while (IsDigit(Peek())) ++at_;
    if (Peek() == '.' && IsDigit(Peek(1))) {
      real = true;
      ++at_;
      while (IsDigit(Peek())) ++at_;
    }
    const std::size_t sign = Peek(1) == '+' || Peek(1) == '-' ? 1 : 0;
    if ((Peek() == 'e' || Peek() == 'E') && IsDigit(Peek(1 + sign))) {
      real = true;
      at_ += 1 + sign;
      while (IsDigit(Peek())) ++at_;
    }
    if (IsNameStart(Peek())) Fail(at_, std::string("wanted the end of the number, found '") + Peek() + "'");
    const std::string_view digits = std::string_view(text_).substr(start, at_ - start);
    Token& token = Add(TokenKind::Literal, start, at_);
    std::int64_t whole = 0;
    double number = 0;
    if (!real && std::from_chars(digits.data(), digits.data() + digits.size(), whole).ec == std::errc()) {
      const auto narrow = static_cast<std::int32_t>(whole);
      token.literal = narrow == whole ? Value::Integer(narrow) : Value::Int64(whole);
      return;
    }
    if (!real) {
      Fail(start, "wanted a whole number of at most 9223372036854775807, found " + std::string(digits) +
                      "; with .0 it is a Double");
    }
    if (std::from_chars(digits.data(), digits.data() + digits.size(), number).ec != std::errc()) {
      Fail(start, "wanted a number that a Double can hold, found " + std::string(digits));
    }
    token.literal = Value::Double(number);
  }

  // &h, &b, &o: a number; &c: a colour.
  void Radix() {
    const std::size_t start = at_;
    const char kind = static_cast<char>(LowerCase(static_cast<unsigned char>(Peek(1))));
    const int base = kind == 'h' || kind == 'c' ? 16 : kind == 'b' ? 2 : kind == 'o' ? 8 : 0;
    if (base == 0)
      Fail(start, "wanted &h, &b, &o or &c and digits, found '&" + std::string(1, Peek(1)) +
                      "'; to join texts, write a blank behind &");
    at_ += 2;
    const std::size_t first = at_;
    while (IsNameCharacter(Peek())) ++at_;
    std::uint64_t bits = 0;
    const char* const end = text_.data() + at_;
    const auto [stop, error] = std::from_chars(text_.data() + first, end, bits, base);
    if (first == at_ || stop != end || error != std::errc()) {
      Fail(start, "wanted digits of base " + std::to_string(base) + ", found '" +
                      text_.substr(start, at_ - start) + "'; to join texts, write a blank behind &");
    }
    Token& token = Add(TokenKind::Literal, start, at_);
    if (kind == 'c') {
      if (at_ - first != 6 && at_ - first != 8) Fail(start, "wanted &cRRGGBB, found " + token.text);
      token.literal = Value::Color(static_cast<std::uint32_t>(bits));
    } else if (bits <= UINT32_MAX) {
      token.literal = Value::Integer(static_cast<std::int32_t>(static_cast<std::uint32_t>(bits)));
    } else {
      token.literal = Value::Int64(static_cast<std::int64_t>(bits));
    }
  }

  void Operator() {
    static constexpr std::array<std::string_view, 9> kTwo = {
        "<=", ">=", "<>", "+=", "-=", "*=", "/=", "\\=", "&="};
    const std::size_t start = at_;
    for (const std::string_view two : kTwo) {
      if (text_.compare(at_, 2, two) == 0) {
        at_ += 2;
        Add(TokenKind::Operator, start, at_);
        return;
      }
    }
    static constexpr std::string_view kOne = "+-*/\\^=<>(),.:&";
    if (kOne.find(Peek()) == std::string_view::npos) {
      const auto byte = static_cast<unsigned char>(Peek());
      if (byte == '#') Fail(at_, "wanted a statement, found '#': all of a program is compiled; write If");
      Fail(at_, byte < 0x20 ? "wanted a statement, found a control character"
                            : std::string("wanted a statement, found '") + Peek() + "'");
    }
    ++at_;
    Add(TokenKind::Operator, start, at_);
  }

  const std::string& text_;
  std::size_t at_ = 0;
  std::int32_t line_ = 1;
  std::size_t lineStart_ = 0;
  std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> Tokenize(const Source& source, std::vector<ProgramError>& errors) {
  return Lexer(source).Run(errors);
}

}  // namespace hostrun
