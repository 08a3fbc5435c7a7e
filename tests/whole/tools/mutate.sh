#!/usr/bin/env bash
# tests/whole/tools/mutate.sh SOURCE - tools/mutate over a tree of one source and one test, where it is known what the
# test notices. Exits with 77 where the system gives no namespaces to mount in.
set -uo pipefail
source=$(realpath "$1")
unshare --user --map-root-user --mount --pid --fork true 2>/dev/null || {
  echo "skipped: this system gives no user namespaces"
  exit 77
}
# Debian's own python, as in the other tests: another may take longer to start than a mutant takes.
PATH=/usr/bin:$PATH
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}
# mutate ARGUMENT...: runs the tool.
mutate() { (cd "$work" && tools/mutate "$@") >"$work/said" 2>&1; }
# verdict TEXT: the verdicts on the mutants that turn a line into one with that text.
verdict() { awk -v text="$1" '/^[a-z]+.*: hostrun\//{ at = $1; sub(/:.*/, "", at) } /^\+ / && index($0, text) { print at }' "$work/build/mutate/report.txt"; }

mkdir -p "$work/tools" "$work/tests/whole/mutants" "$work/hostrun/room"
cd "$work" || exit 1
cp "$source"/tools/{build,configure,mutate} tools/
cp "$source"/tests/whole/mutants/*.py tests/whole/mutants/
# What bootstrap sets up is not needed here.
printf '#!/bin/sh\n' >tools/bootstrap
chmod +x tools/bootstrap
cat >CMakePresets.json <<'END'
{ "version": 6, "configurePresets": [ { "name": "default", "generator": "Ninja", "binaryDir": "${sourceDir}/build" } ] }
END
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Place LANGUAGES CXX)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
enable_testing()
add_subdirectory(hostrun houses/hostrun)
END
cat >hostrun/CMakeLists.txt <<'END'
add_executable(sums room/sums.cpp)
target_compile_options(sums PRIVATE -g -Wall -Wextra -Werror)
add_test(NAME sums COMMAND sums)
add_test(NAME nothing COMMAND sums nothing)
END
cat >hostrun/room/sums.cpp <<'END'
// Adds 1 + 2: not a sum that changes.
#include <unistd.h>

// Counted in a small type, so that a mutant that counts down ends soon too.
static int Sum(int last) {
  int sum = 0;
  for (signed char i = 1; i <= last; ++i) {
    sum += i;
  }
  return sum;
}

static int Limited(int value, const char*) {
  if (value > 10) return 10;
  return value * 1;
}

struct Row {
  const char* name;
  int value;
};

static const Row kRows[] = {
    {"three", 3},
};

int main(int count, char**) {
  if (count > 1) return 0;
  if (count > 5) pause();
  return Limited(Sum(2), kRows[0].name) == kRows->value ? 0 : 1;
}
END
echo 'hostrun : sums : ^(sums|nothing)$' >tests/whole/mutants/rooms.txt
cat >tests/whole/mutants/equivalents.txt <<'END'
# Judged.
hostrun/room/sums.cpp
- if (value > 10) return 10;
+ if (value >= 10) return 10;
  ten is ten
END
cp hostrun/room/sums.cpp original

python3 -B - <<'END' || fail "the mark of a method is no arithmetic"
import sys
sys.path.insert(0, "tests/whole/mutants")
import operators
source = "+ (int)sum:(int)a {\n  return a + 1;\n}\n- (int)rest:(int)a {\n  return a - 1;\n}\n"
sys.exit([m.text for m in operators.mutants_of("a.m", source) if m.kind == "arithmetic"] != ["-", "+"])
END

# What waits for ever meets a short limit; the rest has time.
mutate hostrun/room/sums.cpp:29 10 one --limit 3
[ "$(verdict 'if (!(count > 5)) pause();')" = noticed ] || fail "what does not end is noticed"
grep -q '^noticed by the time limit' build/mutate/report.txt || fail "the time limit is named"
grep -E '^[a-z]+.*: hostrun/' build/mutate/report.txt | grep -qv 'sums.cpp:29 ' && fail "a line's mutants are that line's"

mutate hostrun/room 1000 one && fail "the status tells of survivors"
cmp -s original hostrun/room/sums.cpp || fail "the source stays as it was"
[ "$(verdict 'sum -= i;')" = noticed ] || fail "what a test notices is noticed"
[ "$(verdict 'for (signed char i = 1; i < last; ++i) {')" = noticed ] || fail "a changed relation is noticed"
[ "$(verdict 'if (!(value > 10)) return 10;')" = noticed ] || fail "a turned condition is noticed"
[ "$(verdict 'if (value > 10) return 11;')" = survived ] || fail "what no test asks for survives"
[ "$(verdict '{"threex", 3},')" = survived ] || fail "a changed text that nobody reads survives"
[ "$(verdict 'return value / 1;')" = identical ] || fail "what compiles to the same code is identical"
[ "$(verdict 'if (value >= 10) return 10;')" = equivalent ] || fail "what was judged is not run"
[ "$(verdict 'static int Sum(int last) { return {};')" = noticed ] || fail "an early return is noticed"
[ "$(verdict 'if (count >= 1) return 0;')" = survived ] || fail "what makes the tests say nothing survives"
[ "$(verdict 'Limited(kRows[0].name, Sum(2))')" = refused ] || fail "what the compiler does not take is refused"
grep -q 'Adds' build/mutate/report.txt && fail "comments are left alone"
grep -q '^- int sum = 0;' build/mutate/report.txt || fail "each mutant comes with its lines"
grep -qE '^mutate: ([0-9]+) mutants drawn by seed one, [0-9]+ to run$' said || fail "how many are drawn: $(cat said)"

# The same again runs nothing that the tests have not had.
cp build/mutate/report.txt before
mutate hostrun/room 1000 one
grep -q ', 0 to run$' said || fail "what is known is not run again: $(cat said)"
cmp -s before build/mutate/report.txt || fail "the report is the same again"
# A new test: only the survivors have another chance.
echo >tests/more
mutate hostrun/room 1000 one
survivors=$(grep -c '^survived' before)
grep -q ", $survivors to run\$" said || fail "survivors meet a new test: $(cat said)"

mutate hostrun/room 2 two
[ "$(grep -cE '^(noticed|survived|identical|refused|equivalent).*: hostrun/' build/mutate/report.txt)" = 2 ] || fail "as many as were asked for"
mutate nowhere && fail "an unknown room is refused"
grep -q 'wanted a folder or a file .* found nowhere' said || fail "the refusal says what was wanted: $(cat said)"

printf 'hostrun/room/sums.cpp\n- gone();\n+ {}\n  was once\n' >>tests/whole/mutants/equivalents.txt
mutate hostrun/room && fail "a judgement on a line that is gone is refused"
grep -q 'judge it anew: gone();' said || fail "it says which: $(cat said)"
sed -i '/gone/,$d' tests/whole/mutants/equivalents.txt
sed -i '$d' tests/whole/mutants/equivalents.txt

sed -i 's/Sum(2)/Sum(3)/' hostrun/room/sums.cpp
mutate hostrun/room 5 three && fail "tests that fail by themselves are refused"
grep -q 'wanted tests that pass without a mutant, sums fails' said || fail "it says which test: $(cat said)"

[ "$failures" = 0 ] || cat build/mutate/report.txt
exit $((failures > 0))
