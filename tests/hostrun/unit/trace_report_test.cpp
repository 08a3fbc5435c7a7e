// tests/hostrun/unit/trace_report_test.cpp - the forms in which a trace tells of the same calls.
#include "hostrun/commands/trace_report.h"

#include <gtest/gtest.h>

namespace hostrun {
namespace {

using Lines = std::vector<std::string>;

// A call with arguments, in which the bundle acts and makes an instance; then one that raises; then the first
// once more.
void Tell(TraceReport& report) {
  const EnteredCall read{"Any.read",
                         "Any: read(byref a as double)",
                         "read(byref a as double)",
                         {{"self", "Any#1"}, {"a", "byref 0"}},
                         3,
                         "p.bas:3: any.read a"};
  const EnteredCall born{"Any: its constructor", "Any#2: its constructor", "", {}, 3, ""};
  const EnteredCall fail{"Any.fail", "Any: fail as Any", "fail as Any", {}, 0, ""};
  report.Enter(read);
  report.Act(ActionKind::Message, "[x y]");
  report.Enter(born);
  report.Act(ActionKind::Service, "REALLockObject(Any#2)");
  report.Leave({"Any: its constructor", false, "", {}, std::chrono::nanoseconds(1'240)});
  report.Act(ActionKind::Function, "CFRelease(x)");
  report.Act(ActionKind::Message, "[x z]");
  report.Leave({"Any.read", false, "7", {{"a", "0.5"}}, std::chrono::nanoseconds(3'000'000)});
  report.Enter(fail);
  report.Leave({"Any.fail", true, "IOException: why", {}, std::chrono::nanoseconds(500)});
  report.Enter(read);
  report.Leave({"Any.read", false, "8", {{"a", "1"}}, std::chrono::nanoseconds(1'000'000)});
  report.Finish();
}

template <class Make>
Lines ToldBy(Make make) {
  Lines lines;
  Tell(*make([&lines](const std::string& line) { lines.push_back(line); }));
  return lines;
}

TEST(TraceReport, AsTextIsIndentedByTheDepthOfCalls) {
  EXPECT_EQ(
      ToldBy([](const TakeLine& take) { return TextReport(take, false); }),
      (Lines{"p.bas:3: any.read a", "  > Any: read(byref a as double)",
             "      with self = Any#1, a = byref 0", "      sends [x y]", "      > Any#2: its constructor",
             "          uses REALLockObject(Any#2)", "      < returns, 1.2 µs", "      calls CFRelease(x)",
             "      sends [x z]", "  < gives 7, a = 0.5, 3000.0 µs", "  > Any: fail as Any",
             "  < raises IOException: why, 0.5 µs", "p.bas:3: any.read a", "  > Any: read(byref a as double)",
             "      with self = Any#1, a = byref 0", "  < gives 8, a = 1, 1000.0 µs"}));
}

TEST(TraceReport, AsJsonHasAnObjectALine) {
  EXPECT_EQ(
      ToldBy([](const TakeLine& take) { return JsonReport(take); }),
      (Lines{
          R"_({"event":"call","depth":0,"line":3,"member":"Any.read","declaration":"read(byref a as double)",)_"
          R"_("arguments":{"self":"Any#1","a":"byref 0"}})_",
          R"_({"event":"message","depth":1,"text":"[x y]"})_",
          R"_({"event":"call","depth":1,"line":3,"member":"Any: its constructor","declaration":null,"arguments":{}})_",
          R"_({"event":"service","depth":2,"text":"REALLockObject(Any#2)"})_",
          R"_({"event":"return","depth":1,"member":"Any: its constructor","result":null,"outputs":{},"nanoseconds":1240})_",
          R"_({"event":"function","depth":1,"text":"CFRelease(x)"})_",
          R"_({"event":"message","depth":1,"text":"[x z]"})_",
          R"_({"event":"return","depth":0,"member":"Any.read","result":"7","outputs":{"a":"0.5"},"nanoseconds":3000000})_",
          R"_({"event":"call","depth":0,"line":0,"member":"Any.fail","declaration":"fail as Any","arguments":{}})_",
          R"_({"event":"raise","depth":0,"member":"Any.fail","exception":"IOException: why","outputs":{},"nanoseconds":500})_",
          R"_({"event":"call","depth":0,"line":3,"member":"Any.read","declaration":"read(byref a as double)",)_"
          R"_("arguments":{"self":"Any#1","a":"byref 0"}})_",
          R"_({"event":"return","depth":0,"member":"Any.read","result":"8","outputs":{"a":"1"},"nanoseconds":1000000})_"}));
}

TEST(TraceReport, AsASummaryAddsUpEachMemberTheLongestFirst) {
  EXPECT_EQ(ToldBy([](const TakeLine& take) { return SummaryReport(take, false); }),
            (Lines{"   calls     time ms  µs a call    messages    services  member",
                   "       2       4.000     2000.0           2           0  Any.read(byref a as double)",
                   "       1       0.001        1.2           0           1  Any: its constructor",
                   "       1       0.001        0.5           0           0  Any.fail as Any"}));
}

TEST(TraceReport, AsASummaryInJsonHasAnObjectAMember) {
  EXPECT_EQ(
      ToldBy([](const TakeLine& take) { return SummaryReport(take, true); }),
      (Lines{
          R"_({"member":"Any.read","declaration":"read(byref a as double)","calls":2,"nanoseconds":4000000,"messages":2,"services":0})_",
          R"_({"member":"Any: its constructor","declaration":null,"calls":1,"nanoseconds":1240,"messages":0,"services":1})_",
          R"_({"member":"Any.fail","declaration":"fail as Any","calls":1,"nanoseconds":500,"messages":0,"services":0})_"}));
}

TEST(TraceReport, InColourPaintsHeadingsAndExceptionsAndTimes) {
  const Lines lines = ToldBy([](const TakeLine& take) { return TextReport(take, true); });
  const Lines plain = ToldBy([](const TakeLine& take) { return TextReport(take, false); });
  ASSERT_EQ(lines.size(), plain.size());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const bool painted = plain[i].starts_with("p.bas") || plain[i].find("> ") != std::string::npos ||
                         plain[i].find("< ") != std::string::npos;
    EXPECT_EQ(lines[i].find("\033[") != std::string::npos, painted) << plain[i];
  }
}

}  // namespace
}  // namespace hostrun
