#!/usr/bin/env bash
# tests/whole/tools/build.sh SOURCE - tools/build in trees that were copied, moved or made read-only. The trees hold the
# project's own tools and a project of three files, so that a build takes a moment.
set -uo pipefail
source=$(realpath "$1")
work=$(mktemp -d)
trap 'chmod -R u+w "$work"; rm -rf "$work"' EXIT
chmod 755 "$work"
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}
# said TEXT: whether the last build said it.
said() { grep -qF -e "$1" "$work/said"; }
# build TREE [COMMAND...]: builds there, by way of that command.
build() {
  local tree=$work/$1
  shift
  "$@" "$tree/tools/build" >"$work/said" 2>&1
}
# state TREE: every file of it with time and size.
state() { (cd "$work/$1" && find . -printf '%p %T@ %s\n' | sort); }

mkdir -p "$work/first/tools"
cd "$work" || exit 1
cp "$source"/tools/{build,configure} first/tools/
# What bootstrap sets up is not needed here.
printf '#!/bin/sh\n' >first/tools/bootstrap
chmod +x first/tools/bootstrap
cat >first/CMakePresets.json <<'END'
{ "version": 6, "configurePresets": [ { "name": "default", "generator": "Ninja", "binaryDir": "${sourceDir}/build" } ] }
END
cat >first/CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.25)
project(Place LANGUAGES NONE)
file(GLOB inputs CONFIGURE_DEPENDS input*)
foreach(name place again more)
  add_custom_command(OUTPUT ${name} DEPENDS ${inputs} VERBATIM
    COMMAND ${CMAKE_COMMAND} -E echo ${PROJECT_SOURCE_DIR} > ${name})
endforeach()
add_custom_target(all_places ALL DEPENDS place again more)
END
touch first/input

build first || { cat said; exit 1; }
said 'build: files to build: 3' || fail "a first build says how many files it makes: $(cat said)"
[ "$(cat first/build/place)" = "$work/first" ] || fail "a build is made for the folder that it stands in"
build first || fail "a second build succeeds"
[ -s said ] && fail "nothing is said when nothing is built: $(cat said)"

touch first/input_more first/CMakeLists.txt
build first
said 'build: files to build: 3' || fail "what CMake does first is not counted: $(cat said)"

state first >before
cp -r first copy
build copy || fail "a copied tree builds: $(cat said)"
said 'beginning it afresh' && said "$work/first" && said "$work/copy" || fail "a copy says that it begins afresh: $(cat said)"
[ "$(cat copy/build/place)" = "$work/copy" ] || fail "a copy builds in its own folder"
state first | diff before - >difference || fail "the original stays as it was: $(head -n 5 difference)"
build copy && [ ! -s said ] || fail "the copy's second build has nothing to do: $(cat said)"

mv first moved
build moved || fail "a moved tree builds: $(cat said)"
said 'beginning it afresh' || fail "a moved tree says that it begins afresh: $(cat said)"
[ "$(cat moved/build/place)" = "$work/moved" ] || fail "a moved tree builds where it is now"
[ ! -e first ] || fail "nothing is made where the tree was"

ln -s moved link
build link && [ ! -s said ] || fail "a tree reached by a link is the same tree: $(cat said)"

# On a terminal the status line comes and goes.
touch moved/input
script -qec "$work/moved/tools/build" /dev/null >said </dev/null || fail "a build on a terminal succeeds"
said '[3/3]' || fail "a terminal shows how far the build is: $(cat -v said)"
[ "$(tail -c 4 said)" = $'\r\033[K' ] || fail "the status line is gone at the end: $(cat -v said)"

# Root may write everywhere; then somebody else tries.
as=()
[ "$(id -u)" != 0 ] || as=(setpriv --reuid 65534 --regid 65534 --clear-groups)
chmod -R a+rX,a-w moved
state moved >before
build moved "${as[@]}" || fail "a built tree that can't be written to is used: $(cat said)"
said 'what was built there is used as it is' || fail "a tree that can't be written to says so: $(cat said)"
state moved | diff before - >difference || fail "a tree that can't be written to stays as it was: $(head -n 5 difference)"

# What goes wrong is shown, with ninja's status.
sed -i 's/-E echo/-E false/' copy/CMakeLists.txt
build copy && fail "a build that fails ends with an error"
said FAILED || fail "a build that fails shows what ninja says: $(cat said)"

[ $failures = 0 ] && echo "all of it holds"
