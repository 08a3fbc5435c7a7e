#!/usr/bin/env bash
# tests/bundle/desktop/command_test.sh FINAL-LINK GOOD-OBJECT FOLDER - the command says what is wrong in one line, and
# leaves what was there before. GOOD-OBJECT writes an object that can be linked.
set -uo pipefail
link=$1
good=$2
folder=$3
failures=0
rm -rf "$folder"
mkdir -p "$folder"
cd "$folder" || exit 1
head -c 300 /dev/zero >zeros.o
echo "the bundle before" >QVXColor

# refuses STATUS LINE ARGUMENT...
refuses() {
  local output status
  output=$("$link" "${@:3}" 2>&1)
  status=$?
  if [ $status != "$1" ] || [ "$output" != "$2" ]; then
    echo "${*:3}: wanted status $1 and \"$2\", found status $status and \"$output\""
    failures=$((failures + 1))
  fi
}

# wants WHAT COMMAND...: that the command succeeds.
wants() {
  if ! "${@:2}"; then
    echo "wanted $1, found it otherwise"
    failures=$((failures + 1))
  fi
}

refuses 2 'usage: final_link OBJECT BUNDLE DEBUG SYMBOL' zeros.o QVXColor
refuses 1 'final_link: zeros.o: wanted the magic number 0xFEEDFACE, found 0x0' zeros.o QVXColor debug Entry
refuses 1 'final_link: none.o: wanted an object to read, found none' none.o QVXColor debug Entry
wants "the bundle before" grep -qx "the bundle before" QVXColor
wants "no file for debuggers" test ! -e debug

"$good" good.o
mkdir folder
refuses 1 'final_link: good.o: wanted to write folder, found something that is no file' good.o folder debug Entry
wants "the folder before" test -d folder
refuses 1 'final_link: good.o: wanted to write none/debug, found No such file or directory' good.o QVXColor none/debug Entry
wants "the bundle before" grep -qx "the bundle before" QVXColor
mkdir debug.new
refuses 1 'final_link: good.o: wanted to write debug, found Is a directory' good.o QVXColor debug Entry
wants "the folder before" test -d debug.new
rmdir debug.new
echo "the names before" >debug
(
  ulimit -f 0
  trap '' XFSZ
  refuses 1 'final_link: good.o: wanted to write debug, found File too large' good.o QVXColor debug Entry
  exit $failures
)
failures=$?
wants "the names before" grep -qx "the names before" debug
(
  ulimit -f 1 # in 1024 bytes: less than a bundle takes
  trap '' XFSZ
  refuses 1 'final_link: good.o: wanted to write QVXColor, found File too large' good.o QVXColor debug Entry
  exit $failures
)
failures=$?
wants "the bundle before" grep -qx "the bundle before" QVXColor

wants "nothing half written" test "$(echo *)" = "QVXColor debug folder good.o zeros.o"

# links RIGHTS-TO-LEAVE-OUT RIGHTS...: of the bundle and of the file for debuggers.
links() {
  rm -f QVXColor debug
  (umask "$1" && "$link" good.o QVXColor debug Entry) || failures=$((failures + 1))
  wants "the rights ${*:2}" test "$(stat -c %a QVXColor debug | xargs)" = "${*:2}"
}
links 022 755 644
links 027 750 640
links 077 700 600
wants "nothing else" test "$(echo *)" = "QVXColor debug folder good.o zeros.o"
exit $failures
