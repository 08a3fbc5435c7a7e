#!/usr/bin/env bash
# tests/whole/tools/take_object.sh ORIGINAL COPY STALE COMPILER ARGUMENT... - a compiler launcher for a build in a copy of
# the tree: takes an object from the original's build folder, but for those that the file STALE names, one a line, and
# those whose definitions name the copy: these are compiled.
original=$1
copy=$2
stale=$3
shift 3
object=
previous=
definitions=
for argument; do
  [ "$previous" = -o ] && object=$argument
  [[ $argument == -D*"$copy"* ]] && definitions=its
  previous=$argument
done
if [ -z "$definitions" ] && [ -f "$original/$object" ] && ! grep -qxF -e "$object" "$stale"; then
  exec cp "$original/$object" "$object"
fi
exec "$@"
