// tests/whole/fuzz/programs.cpp - program texts of any bytes through the runner, up to the point where they
// would run.
#include <exception>

#include "hostrun/host/host.h"
#include "hostrun/language/program.h"
#include "tests/whole/fuzz/target.h"

namespace {

void StartOnce() {
  static const bool started = (hostrun::RegisterHostClasses(), true);
  static_cast<void>(started);
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  return {
      R"(Dim a As Integer = 1
Print Str(a + 2 * 3 ^ 2 Mod 5)
)",
      R"(Dim m As MemoryBlock = New MemoryBlock(4)
m.Byte(0) = 255
)",
      R"(For i As Integer = 0 To 10 Step 2
  If i = 4 Then
    Continue
  Else
    Exit
  End If
Next
)",
      R"(Try
  Raise New RuntimeException
Catch e As RuntimeException
  Print e.Message
Finally
End Try
)",
      R"(Select Case 3
Case 1, 2
Case Is > 2
Case Else
End Select
While False
Wend
Do
Loop Until True
)",
      R"(Function F(x As Double, ByRef y As String, ParamArray z As Variant) As Boolean
  Return Not (x < 1 And y <> "")
End Function
Sub S()
End Sub
S
)",
      R"(Const k = &hFF
Dim s As String = "a""b" + Chr(65)
Dim c As Color = &cFF7F00
Dim d() As Double
d.Append 1.5e3
)",
  };
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  StartOnce();
  const hostrun::Source source("input.bas", std::string(reinterpret_cast<const char*>(data), size));
  try {
    hostrun::Compile(source);
  } catch (const hostrun::ProgramError& error) {
    // The refusal itself must hold for any text.
    if (source.Describe(error.at(), error.what()).empty()) fuzz::Fail("a refusal without a text");
  }
  return 0;
}
