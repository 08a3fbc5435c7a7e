#!/usr/bin/env bash
# tests/whole/present/use.sh HOSTRUN REFERENCE - what "hostrun swatches" and "hostrun docs" do and what they refuse.
set -uo pipefail
hostrun=$(realpath "$1")
reference=$(realpath "$2")
members=$(grep -c '^\[member ' "$reference")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failures=0

# check DESCRIPTION WANTED-STATUS WANTED-IN-STDERR ARGUMENT...
check() {
  local what=$1 status=$2 text=$3 found
  shift 3
  "$hostrun" "$@" >out 2>err
  found=$?
  if [ "$found" != "$status" ] || ! grep -qF -- "$text" err; then
    echo "FAILED: $what: wanted status $status and \"$text\", found status $found and:"
    cat err
    failures=$((failures + 1))
  fi
}
# holds DESCRIPTION COMMAND...
holds() {
  local what=$1
  shift
  "$@" >/dev/null 2>&1 || {
    echo "FAILED: $what"
    failures=$((failures + 1))
  }
}
starts_with() { [ "$(head -c "${#2}" "$1")" = "$2" ]; }
png_width() { od -An -tu1 -j16 -N4 "$1" | awk '{ print (($1 * 256 + $2) * 256 + $3) * 256 + $4 }'; }
png_height() { od -An -tu1 -j20 -N4 "$1" | awk '{ print (($1 * 256 + $2) * 256 + $3) * 256 + $4 }'; }
count() { grep -c -- "$1" "$2"; }
silent() { [ "$(wc -l <err)" = 1 ]; }

# ---- swatches ----
check "the predefined colours are drawn" 0 "46 colours drawn in all.png" swatches --out all.png
holds "nothing but the tally is said" silent
holds "a PNG is a PNG" starts_with all.png $'\x89PNG'
holds "a PNG is smaller than 300 KB" test "$(stat -c %s all.png)" -lt 300000
check "columns set the width" 0 "46 colours" swatches --out narrow.png --columns 2
holds "two columns are narrower than five" test "$(png_width narrow.png)" -lt "$(png_width all.png)"
check "the predefined colours are drawn as SVG" 0 "46 colours drawn in all.svg" swatches --out all.svg
holds "an SVG is an SVG" grep -q '<svg ' all.svg
holds "red is drawn as red" grep -q 'fill="#ff0000"' all.svg

cat >list.bas <<PROGRAM
Dim list As New NSColorListQVX
Print list.Create("Warm")
list.setColor NSColorQVX.colorWithDeviceRGB(0, 1, 0.2, 0.5), "see-through"
list.setColor NSColorQVX.controlColor, "known by name"
Print list.writeToFile("$work/Warm.clr")
Print "first:", list.colorWithKey("see-through")
Print "value", list.colorWithKey("see-through").colorValue, &c112233
PROGRAM
check "a program's printed colours are drawn" 0 "3 colours drawn in printed.svg" swatches --out printed.svg list.bas
holds "the program still prints" grep -q '^first: NSColorQVX$' out
holds "a half transparent colour is drawn so" grep -q 'fill="#00ff33" fill-opacity="0.5"' printed.svg
check "the colours of a list file are drawn" 0 "2 colours drawn in list.svg" swatches --out list.svg Warm.clr
holds "the same colour from the file" grep -q 'fill="#00ff33" fill-opacity="0.5"' list.svg

cat >names.bas <<'PROGRAM'
Print "a" + Chr(9) + "tab, a" + Chr(10) + "line & a <sign>", &cFF0000
Print "a name that is far too long for the card that it stands on, so that it is cut", &c00FF00
PROGRAM
check "any name can be drawn" 0 "2 colours drawn in names.svg" swatches --out names.svg names.bas
holds "control characters are shown as symbols" grep -q '>a␉tab, a␊line &amp; a &lt;sign&gt;</text>' names.svg
holds "the whole name is the card's title" grep -q '<title>a name that is far .* so that it is cut</title>' names.svg
holds "and is cut on the card" grep -q '>a name that is far too .*…</text>' names.svg
holds "it is well formed" python3 -c 'import sys, xml.dom.minidom as m; m.parse(sys.argv[1])' names.svg
check "a picture of it can be drawn" 0 "2 colours drawn in names.png" swatches --out names.png names.bas
holds "and nothing is missing in it" silent
printf 'Print "\xf3\xb0\x80\x80", &cFF0000\n' >private.bas
check "a letter that the font does not have is said" 0 "has no 󰀀 (U+F0000); boxes are drawn" swatches --out private.png private.bas
check "what reads an SVG has fonts of its own" 0 "1 colour drawn" swatches --out private.svg private.bas
holds "so that nothing is said" silent
cat >many.bas <<'PROGRAM'
For i As Integer = 1 To 500
  Print "colour number " + Str(i), NSColorQVX.colorWithSRGB(i / 500, 0.5, 0.123456, 0.75)
Next
PROGRAM
check "many colours are drawn" 0 "500 colours drawn in many.svg" swatches --out many.svg many.bas
holds "in less than 300 KB" test "$(stat -c %s many.svg)" -lt 300000

echo 'Print "no colour"' >none.bas
check "a program without colours is refused" 2 "wanted a program that prints colours, found none printed" swatches none.bas
printf 'Print "a", &cFF0000\nDim c As NSColorQVX = NSColorQVX.redColor\nc.getWhite(1)\n' >wrong.bas
check "a wrong program shows its line" 2 "wrong.bas:3:" swatches wrong.bas
printf 'Print "a", &cFF0000\nDim a As Double\nNSColorQVX.redColor.getWhite(a)\n' >raises.bas
check "an uncaught exception still draws what was printed" 1 "1 colour drawn in raises.png" swatches --out raises.png raises.bas
holds "and the picture is there" test -s raises.png
check "one colour in a row" 1 "1 colour drawn in single.png" swatches --columns 1 --out single.png raises.bas
holds "what is said above the colours goes over several lines where it must" \
  test "$(png_height single.png)" -gt "$(png_height raises.png)"
check "a missing list is refused" 2 "absent.clr: wanted a colour-list file, found none" swatches absent.clr
echo junk >junk.clr
check "a file that is no list is refused" 2 "junk.clr: wanted a colour-list file, found something" swatches junk.clr
check "another source is refused" 2 "wanted a colour list (.clr) or a program (.bas), found neither" swatches all.png
check "another format is refused" 2 "wanted a file name that ends in .png or .svg, found .gif" swatches --out all.gif
check "a folder that is not there is refused" 2 "absent/all.png: wanted a file to write to, found: No such file or directory" swatches --out absent/all.png
check "no columns are refused" 2 "--columns" swatches --columns 0
check "a bundle that is not there is refused" 2 "absent.so" swatches --bundle absent.so

# ---- docs ----
check "the reference is written" 0 "$members members described in page.html" docs --descriptions "$reference" --out page.html
holds "every member has its article" test "$(count '<article ' page.html)" = "$members"
holds "each class has its first steps and each group an example" test "$(count '<figure>' page.html)" = \
  "$(grep -cE '^\[(first steps|example)\]' "$reference")"
holds "overloads are told apart" grep -q '>getHSV <small>(hue, saturation, brightness, alpha)</small></a></li>' page.html
holds "types lead to their class" grep -q 'as</i> <a href="#NSColorSpaceQVX">NSColorSpaceQVX</a>' page.html
holds "the host's classes are there" test "$(count 'data-in="MemoryBlock"' page.html)" = 21
check "a host without them gets a page without them" 0 "$((members - 11)) members described" docs --no-sibling --descriptions "$reference" --out small.html
holds "46 members have a swatch" test "$(count 'class="swatch"' page.html)" = 46
holds "overloads have addresses of their own" grep -q 'id="NSColorQVX.getHSV-2"' page.html
holds "defaults come from the declarations" grep -q '<dt>Defaults</dt><dd>alpha is 1 where left out' page.html
holds "no address is used twice" test -z "$(grep -o ' id="[^"]*"' page.html | sort | uniq -d)"
holds "nothing is fetched from anywhere" test "$(grep -cE '(src|href)="(https?:)?//|url\(|@import|<link' page.html)" = 0

sed '/^\[member redComponent\]/,/^$/d' "$reference" >short.txt
check "a member without a description is named" 2 "no description of the registered member redComponent" docs --descriptions short.txt --out no.html
holds "and nothing is written" test ! -e no.html
sed 's/^\[member redComponent\]/[member rosyComponent]\nA rosy one.\n\n&/' "$reference" >long.txt
check "a description without a member is named" 2 "a description of rosyComponent, which is not registered" docs --descriptions long.txt --out no.html
sed 's/^\[member redComponent\]/[member greenComponent]\nA green one.\n\n&/' "$reference" >twice.txt
check "a second description is named" 2 "a second description of greenComponent" docs --descriptions twice.txt --out no.html
sed '/^\[class NSColorListQVX\]/,/^\[class NSColorSpaceQVX\]/{/^\[class NSColorSpaceQVX\]/!d}' "$reference" >two.txt
check "a class without a description is named" 2 "no description of the registered class NSColorListQVX" docs --descriptions two.txt --out no.html
sed '/^\[member colorValue\]/,/^$/{/^raises:/d}' "$reference" >silent.txt
check "a member must say what it raises" 2 'no "raises:" for colorValue' docs --descriptions silent.txt --out no.html
sed '/^\[member colorValue\]/,/^$/{/^nil:/d}' "$reference" >nil.txt
check "a member must say what nil gives" 2 'no "nil:" for colorValue' docs --descriptions nil.txt --out no.html
printf '[member too soon]\n' >early.txt
check "a member needs a group" 2 "early.txt:1: wanted a [group TITLE] before a member" docs --descriptions early.txt --out no.html
printf '[class A]\nnil: one\ntwo\n' >run-on.txt
check "a field's next line must be indented" 2 "run-on.txt:3: wanted a blank line" docs --descriptions run-on.txt --out no.html
printf '[class A]\n[example]\nPrint 1\n' >example.txt
check "an example belongs to a group" 2 "example.txt:2: wanted [example] after the text of a group" docs --descriptions example.txt --out no.html
check "missing descriptions are refused" 2 "absent.txt: wanted the descriptions of the members" docs --descriptions absent.txt
check "a page that can't be written is refused" 2 "absent/page.html: wanted a file to write to, found: No such file or directory" docs --descriptions "$reference" --out absent/page.html

# ---- hostrun itself ----
"$hostrun" --version >out 2>err
holds "the version is said" grep -qE '^hostrun [0-9]+\.[0-9]+\.[0-9]+$' out
for command in swatches docs; do
  "$hostrun" $command --help >out 2>err
  holds "$command --help has an example" grep -q "hostrun $command " out
done

[ "$failures" = 0 ] || exit 1
echo "all of it holds"
