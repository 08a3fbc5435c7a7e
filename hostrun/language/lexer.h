// hostrun/language/lexer.h - cuts a program into words.
#pragma once

#include <string>
#include <vector>

#include "hostrun/host/value.h"
#include "hostrun/language/source.h"

namespace hostrun {

enum class TokenKind : std::uint8_t { Name, Literal, Operator, EndOfLine, EndOfFile };

// One word, operator, literal or end of line. Ends of lines have no text.
struct Token {
  TokenKind kind;
  Position at;
  std::string text;   // as written
  std::string lower;  // of a name, or the operator itself
  Value literal;
};

// All words of the text, in order; comments and continued lines are gone. The last token is EndOfFile, with
// an EndOfLine before it. What can't be read is added to `errors`, and its line left there.
std::vector<Token> Tokenize(const Source& source, std::vector<ProgramError>& errors);

}  // namespace hostrun
