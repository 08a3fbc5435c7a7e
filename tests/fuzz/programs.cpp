// tests/fuzz/programs.cpp - program texts of any bytes through the runner, up to the point where they would
// run.
#include <exception>

#include "runner/host/host.h"
#include "runner/language/program.h"
#include "tests/fuzz/target.h"

namespace {

void StartOnce() {
  static const bool started = (hostrun::RegisterHostClasses(), true);
  static_cast<void>(started);
}

}  // namespace

std::vector<std::string> fuzz::Seeds() {
  return {
      "Dim a As Integer = 1\nPrint Str(a + 2 * 3 ^ 2 Mod 5)\n",
      "Dim m As MemoryBlock = New MemoryBlock(4)\nm.Byte(0) = 255\n",
      "For i As Integer = 0 To 10 Step 2\n  If i = 4 Then\n    Continue\n  Else\n    Exit\n  End If\nNext\n",
      "Try\n  Raise New RuntimeException\nCatch e As RuntimeException\n  Print e.Message\nFinally\nEnd Try\n",
      "Select Case 3\nCase 1, 2\nCase Is > 2\nCase Else\nEnd Select\nWhile False\nWend\nDo\nLoop Until "
      "True\n",
      "Function F(x As Double, ByRef y As String, ParamArray z As Variant) As Boolean\n  Return Not (x < 1 "
      "And y <> \"\")\n"
      "End Function\nSub S()\nEnd Sub\nS\n",
      "Const k = &hFF\nDim s As String = \"a\"\"b\" + Chr(65)\nDim c As Color = &cFF7F00\nDim d() As "
      "Double\nd.Append 1.5e3\n",
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
