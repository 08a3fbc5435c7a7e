#!/usr/bin/env bash
# tests/hostrun/programs/use.sh HOSTRUN FIXTURE-BUNDLE - errors of use: one clear line on stderr, status 2, nothing on stdout.
set -u
hostrun=$1
fixture=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# wants STATUS TEXT COMMAND...: the first line of stderr contains TEXT.
wants() {
  local status=$1 text=$2
  shift 2
  "$@" >"$folder/out" 2>"$folder/err" </dev/null
  local found=$?
  if [ "$found" != "$status" ]; then
    echo "wanted status $status, found $found: $*"
    failed=1
  fi
  if [ -n "$text" ] && ! head -n 1 "$folder/err" | grep -qF -- "$text"; then
    printf 'wanted on stderr: %s\nfound: %s\nby: %s\n' "$text" "$(head -n 3 "$folder/err")" "$*"
    failed=1
  fi
  if [ "$status" = 2 ] && [ -s "$folder/out" ]; then
    echo "wanted nothing on stdout, found: $(head -n 3 "$folder/out"): $*"
    failed=1
  fi
}

echo 'Print "ran"' >"$folder/fine.bas"
fine=$folder/fine.bas
wants 2 'no such file' "$hostrun" "$folder/missing.bas"
wants 2 'found a folder' "$hostrun" "$folder"
wants 2 'hostrun: a program is required' "$hostrun"
wants 2 'hostrun trace: a program is required: wanted PROGRAM.bas' "$hostrun" trace
wants 2 'hostrun debug: a program is required: wanted PROGRAM.bas' "$hostrun" debug
wants 2 'missing: wanted a program file, found no such file' "$hostrun" trace missing
wants 2 'missing: wanted a program file, found no such file' "$hostrun" debug missing
wants 2 'missing: wanted a program file or a command, found neither' "$hostrun" --leaks missing
wants 2 '--frobnicate' "$hostrun" --frobnicate "$fine"
for version in new -1 2015x nan ''; do
  wants 2 'hostrun: --host-version: wanted a version such as 2015.0, found ' "$hostrun" --host-version "$version" "$fine"
done
wants 2 'found --bogus' "$hostrun" --bogus "$fine"
wants 2 'found --bundel; did you mean --bundle?' "$hostrun" --bundel x "$fine"
wants 2 'chekc: wanted a program file or a command, found neither; did you mean check?' "$hostrun" chekc
wants 2 'found REALLockObjekt; did you mean REALLockObject' "$hostrun" --without REALLockObjekt "$fine"
wants 2 '; there are REAL' "$hostrun" --without Foo "$fine"
if [ "$(grep -o 'REALGetStringCFString' "$folder/err" | wc -l)" != 1 ]; then
  echo 'wanted each service once, found one twice'
  failed=1
fi
wants 2 'wanted the name of a service, found Nonsense' "$hostrun" --without Nonsense "$fine"
wants 2 "found REALnewInstance; the host's name for it is PluginNewInstance" "$hostrun" --without REALnewInstance "$fine"
wants 2 'hostrun check: --time-limit: Value 0 not in range 0.1' "$hostrun" check --time-limit 0
wants 2 'hostrun swatches: --columns: Value 51 not in range 1 to 50' "$hostrun" swatches --columns 51
wants 2 'hostrun check: --only-failed excludes --verbose' "$hostrun" check --only-failed --verbose
wants 2 'hostrun completion: shell: tcsh not in {bash,zsh,fish}' "$hostrun" completion tcsh
wants 2 'hostrun completion: shell is required' "$hostrun" completion
wants 0 '' "$hostrun" --help
wants 0 '' "$hostrun" help
wants 2 'hostrun help: wanted one command, found clases; hostrun --help lists the commands' "$hostrun" help clases
wants 2 'hostrun help: wanted one command, found check; hostrun --help lists the commands' "$hostrun" help trace check
cmp -s <("$hostrun" help trace) <("$hostrun" trace --help) || {
  echo "wanted of help trace what trace --help says, found another text"
  failed=1
}

# Several errors in one run: each statement is looked at, and nothing is told twice.
errors_of() {
  wants 2 '' "$hostrun" "$folder/$1"
  if [ "$(sed -n "s|^$folder/$1:||p" "$folder/err")" != "$2" ]; then
    printf 'wanted the errors\n%s\nfound\n%s\n' "$2" "$(cat "$folder/err")"
    failed=1
  fi
}
cat >"$folder/several.bas" <<'END'
Dim a As Integr
Print a, a + 1
Print missing
Print missing
If True Then
  Print also_missing
  Dim s As String = 5
End If
Print s
Sub Fine(x As Integer)
  Print x.y
End Sub
Fine "text"
END
errors_of several.bas '1:10: wanted a type, found Integr, which is none that this host knows; did you mean Integer?
3:7: wanted a variable, a function or a class, found missing, which is not declared
6:9: wanted a variable, a function or a class, found also_missing, which is not declared
7:21: s wants String, found Integer
11:11: wanted an object before '"'.y'"', found Integer
13:6: argument 1 (x) of Fine wants Integer, found String'
cat >"$folder/syntax.bas" <<'END'
Print 1 +
If x = Then
  Print "open
  While True
    Print )
  Wend
End If
For i = 1 Two 3
  Print i
Next
Class Thing
  Dim x As Integer
End Class
Print &hZZ
END
errors_of syntax.bas "1:10: wanted an expression, found the end of the line
2:8: wanted an expression, found 'Then'
3:9: wanted a closing '\"' on this line, found its end
5:11: wanted an expression, found ')'
8:11: wanted 'To' or 'DownTo' after the first value, found 'Two'
11:1: wanted a statement, found 'Class': classes can't be declared here; use Subs, Functions and a Dictionary for what belongs together
14:7: wanted digits of base 16, found '&hZZ'; to join texts, write a blank behind &"
# What divides or ends a block is no error of its own where the block could not be read.
cat >"$folder/blocks.bas" <<'END'
If True
  Print 1
ElseIf False Then
  Print 2
Else
  Print 3
End If
If True Then
  Print 4
ElseIf False
  Print 5
Else
  Print 6
End If
Select Case 7
  Case
    Print 7
  Case Else
    Print 8
End Select
Try
  Print 9
Catch e As
  Print 10
Finally
  Print 11
End Try
Enum Colour
  Red Green
End Enum
Sub First()
  Print 12
Sub Second()
  Print )
End Sub
Do
Loop Untill True
For i As Integer = 1 To 2
Next k
END
errors_of blocks.bas "1:8: wanted 'Then' after the condition, found the end of the line
10:13: wanted 'Then' after the condition, found the end of the line
16:7: wanted an expression, found the end of the line
23:11: wanted a type, found the end of the line
29:7: wanted the end of the statement after a member of an enumeration, found 'Green'
33:1: wanted 'End Sub' for line 31, found 'Sub'
34:9: wanted an expression, found ')'
37:6: wanted the end of the statement, found 'Untill'
39:6: wanted 'i', the variable of For in line 38, found 'k'"
for i in $(seq 30); do echo "Print missing$i"; done >"$folder/many.bas"
wants 2 'many.bas:1:7' "$hostrun" "$folder/many.bas"
if [ "$(grep -c 'not declared' "$folder/err")" != 20 ] || [ "$(tail -n 1 "$folder/err")" != 'and 10 more errors' ]; then
  echo "wanted 20 errors and the number of the others, found: $(tail -n 3 "$folder/err")"
  failed=1
fi
echo 'Raise New RuntimeException("plain")' >"$folder/plain.bas"
wants 1 'plain.bas:1:1: uncaught RuntimeException: plain' "$hostrun" "$folder/plain.bas"
if grep -q '(error' "$folder/err"; then
  echo 'wanted no error number where it is 0'
  failed=1
fi

# Programs from elsewhere than a file.
says() {
  if [ "$(cat "$folder/out")" != "$1" ]; then
    printf 'wanted on stdout:\n%s\nfound:\n%s\n' "$1" "$(cat "$folder/out")"
    failed=1
  fi
}
wants 0 '' "$hostrun" -e 'Dim x As Integer = 6' -e 'Print x * 7, Arguments(0), Arguments.Count' first second
says '42 first 2'
wants 2 '-e:1:7: wanted a variable' "$hostrun" -e 'Print missing'
wants 0 '' bash -c 'printf "Print 6 * 7, Arguments(0)\n" | "$0" - first' "$hostrun"
says '42 first'
wants 2 'standard input:2:7: wanted an expression' bash -c 'printf "Print 1\nPrint )\n" | "$0" -' "$hostrun"
wants 0 '-e:1: NSColorQVX.redColor' "$hostrun" trace -e 'NSColorQVX.redColor'
wants 0 'standard input:1: NSColorQVX.redColor' bash -c 'echo NSColorQVX.redColor | "$0" trace -' "$hostrun"
wants 2 'standard input: wanted a program, found Bad file descriptor' bash -c '"$0" - <&-' "$hostrun"
wants 2 'standard input: wanted a program, found Is a directory' bash -c '"$0" - </' "$hostrun"
printf '#!%s\nPrint "a command", Arguments(0)\n' "$hostrun" >"$folder/command"
chmod +x "$folder/command"
wants 0 '' "$folder/command" given
says 'a command given'
wants 2 'command:2:7: wanted a variable' bash -c 'printf "#!hostrun\nPrint missing\n" >"$1"; "$0" "$1"' "$hostrun" "$folder/command"

# Lines from standard input.
printf 'Print Input("name? ") & "!"\nWhile Not EndOfInput\n  Print Input.Length\nWend\nPrint "[" & Input & "]"\n' >"$folder/ask.bas"
wants 0 '' bash -c 'printf "Ada\r\n\nabc" | "$0" "$1"' "$hostrun" "$folder/ask.bas"
says 'name? Ada!
0
3
[]'

# A standard stream that is closed: no file takes its place.
cat >"$folder/writes.bas" <<'END'
Dim file As TextFile = TextFile.Create(Arguments(0))
file.WriteLine "kept"
Print "printed"
Raise New RuntimeException("said")
END
wants 1 '' bash -c '"$0" "$1" "$2" 2>&-' "$hostrun" "$folder/writes.bas" "$folder/kept"
says 'printed'
wants 2 'uncaught RuntimeException: said' bash -c '"$0" "$1" "$2" >&-' "$hostrun" "$folder/writes.bas" "$folder/kept"
wants 2 '' bash -c '"$0" trace --out "$2.calls" "$1" "$2" <&- >&- 2>&-' "$hostrun" "$folder/writes.bas" "$folder/kept"
if [ "$(cat "$folder/kept")" != kept ] || [ -s "$folder/kept.calls" ]; then
  echo "wanted 'kept' and no trace of calls, found: $(cat "$folder/kept" "$folder/kept.calls")"
  failed=1
fi
wants 2 '' bash -c '"$0" trace -e NSColorQVX.redColor 2>/dev/full' "$hostrun"

# Whoever reads only the first line ends what prints for ever, without a word.
wants 0 '' bash -c '"$0" -e Do -e "Print 1" -e Loop | head -n 1; echo ${PIPESTATUS[0]}' "$hostrun"
says '1
2'
wants 0 '' bash -c 'yes 1 | "$0" repl | head -n 1; echo ${PIPESTATUS[1]}' "$hostrun"
says '1
2'
if [ -s "$folder/err" ]; then
  echo "wanted nothing on stderr, found: $(cat "$folder/err")"
  failed=1
fi
wants 2 'hostrun: wanted to write standard output, found: No space left on device' bash -c '"$0" manual >/dev/full' "$hostrun"

# Bundles that are none.
wants 2 'No such file or directory' "$hostrun" --bundle "$folder/missing.so" "$fine"
wants 2 'found a file that is neither ELF nor Mach-O' "$hostrun" --bundle "$fine" "$fine"
: >"$folder/empty.so"
wants 2 'found a file that is neither ELF nor Mach-O' "$hostrun" --bundle "$folder/empty.so" "$fine"
wants 2 'found a 64-bit ELF file' "$hostrun" --bundle /bin/true "$fine"
{ head -c 16 "$fixture"; printf '\x02\x00\x03\x00'; tail -c +21 "$fixture"; } >"$folder/program"
wants 2 'found an ELF file that is no shared object' "$hostrun" --bundle "$folder/program" "$fine"
head -c 40 "$fixture" >"$folder/cut.so"
wants 2 'found a truncated ELF file' "$hostrun" --bundle "$folder/cut.so" "$fine"
head -c 4000 "$fixture" >"$folder/half.so"
wants 2 'found a truncated ELF file' "$hostrun" --bundle "$folder/half.so" "$fine"
wants 2 'wanted an exported function REALPluginMain, found none' "$hostrun" --bundle "$(dirname "$hostrun")/libcocoa.so" "$fine"
wants 2 'found a folder; take the folder NAME.bundle, or the file in it' "$hostrun" --bundle "$folder" "$fine"

# Desktop bundles that are none.
mach() { printf '\xce\xfa\xed\xfe'; printf "$1"; }
mach '' >"$folder/cut"
wants 2 'wanted the header inside of its 4 bytes' "$hostrun" --bundle "$folder/cut" "$fine"
printf '\xcf\xfa\xed\xfe%028d' 0 >"$folder/wide"
wants 2 'found a 64-bit Mach-O file' "$hostrun" --bundle "$folder/wide" "$fine"
mach '\x12\0\0\0\0\0\0\0\x08\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0' >"$folder/power"
wants 2 'found a Mach-O file for processor 0x12' "$hostrun" --bundle "$folder/power" "$fine"
mkdir -p "$folder/Empty.bundle/Contents/MacOS"
wants 2 "$folder/Empty.bundle/Contents/MacOS/Empty: wanted a bundle" "$hostrun" --bundle "$folder/Empty.bundle/" "$fine"

# Platforms that are none.
wants 2 'wanted the platform library, found no such file' "$hostrun" --platform "$folder/missing.so" "$fine"
wants 2 'wanted a platform library that loads' "$hostrun" --platform "$fine" "$fine"
wants 2 'wanted a platform library, found a library without' "$hostrun" --platform "$fixture" "$fine"

# Programs that are no text, or too much of it.
head -c 3000 "$fixture" >"$folder/binary.bas"
wants 2 'wanted a statement' "$hostrun" "$folder/binary.bas"
printf '\xff\xfeP\0r\0' >"$folder/wide.bas"
wants 2 'wide.bas:1:1: wanted text in UTF-8, found UTF-16' "$hostrun" "$folder/wide.bas"
wants 2 'wanted a program file, found more than 16777216 bytes' "$hostrun" /dev/zero
wants 2 'wanted a program, found more than 16777216 bytes' bash -c '"$0" - </dev/zero' "$hostrun"
wants 2 '/proc/self/mem: wanted a program file, found Input/output error' "$hostrun" /proc/self/mem
printf 'Print "\xff\xfe"\n' >"$folder/latin.bas"
wants 2 'wanted text in UTF-8' "$hostrun" "$folder/latin.bas"
{ printf 'Print '; printf '(%.0s' $(seq 5000); } >"$folder/deep.bas"
wants 2 'at most' "$hostrun" "$folder/deep.bas"
{ printf 'Print 1'; printf ' + 1%.0s' $(seq 5000); } >"$folder/long.bas"
wants 2 'split it' "$hostrun" "$folder/long.bas"
{ for _ in $(seq 5000); do echo 'If True Then'; done; } >"$folder/blocks.bas"
wants 2 'nested blocks' "$hostrun" "$folder/blocks.bas"
{ printf 'Print '; printf 'Not %.0s' $(seq 5000); echo True; } >"$folder/nots.bas"
wants 2 'in a row' "$hostrun" "$folder/nots.bas"
: >"$folder/empty.bas"
wants 0 '' "$hostrun" --leaks "$folder/empty.bas"
printf '\xef\xbb\xbfPrint "mark"\r\nPrint "lines"\r\n' >"$folder/windows.bas"
wants 0 '' "$hostrun" --leaks "$folder/windows.bas"

# A bundle that needs no platform.
cat >"$folder/fixture.bas" <<'END'
Dim f As New Fixture(5)
Print f.Number, f.Word, f.Title, Fixture.Answer, Fixture.Greeting
f.Number = f.Number + 1
f.Number += 1
Print f.Number, f.AddIntegers(1), f.Invert(&c00FF00), f.NotBoolean(False)
Dim a As Double = 1, list() As Double = Array(2.0)
f.Swap a, list(0)
Print a, list(0), Fixture.Total(1, 2, 3), Fixture.Total(list), Fixture.Countdown(3)(0)
Print f.EchoVariant(7), f.EchoVariant("text"), f.EchoVariant(f) Is f, f.Echo("s"), f.Echo(f) Is f
Try
  Fixture.Fail "message"
Catch e As UnsupportedOperationException
  Print e.Message, e.ErrorNumber
End Try
Try
  Fixture.Throw
Catch e As RuntimeException
  Print e.Message
End Try
Print Fixture.Live
END
cat >"$folder/fixture.out" <<'END'
5 77 a fixture 42 hello
7 11 &cFF00FF True
2 1 6 1 3
7 text True s True
message 7
An exception that is no NSException came out of Throw.
1
END
wants 0 '' "$hostrun" --leaks --platform none --bundle "$fixture" "$folder/fixture.bas"
if ! diff "$folder/fixture.out" "$folder/out"; then
  echo 'wanted the output above, found another of fixture.bas'
  failed=1
fi
exit $failed
