#!/usr/bin/env bash
# tests/hostrun/commands/same_commands.sh HOSTRUN BUNDLE OTHER-BUNDLE EXAMPLES - every command says the same over both.
set -u
hostrun=$1
bundles=("$2" "$3")
examples=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
failed=0

# same NAME COMMAND...: runs it with each bundle; what it says is compared, and the FILE in the command, if there is one.
same() {
  local name=$1 i
  shift
  for i in 0 1; do
    "$hostrun" "${@//FILE/$folder/$name.$i.svg}" --bundle "${bundles[i]}" >"$folder/$name.$i" 2>&1 <"$folder/input" || {
      echo "$name: wanted status 0, found another with ${bundles[i]}: $(head -n 3 "$folder/$name.$i")"
      failed=1
    }
    # Times, addresses, the log's heads and where a file was written are each run's own.
    sed -i -E "s/[0-9.]+ µs/N µs/; s/0x[0-9a-f]{6,}/N/g; s/^[-0-9]+ [:.0-9]+ hostrun\[[^ ]*/LOG/; s#$folder/$name.[01]#FILE#" "$folder/$name.$i"
  done
  [ -s "$folder/$name.0" ] || {
    echo "$name: wanted an answer, found none"
    failed=1
  }
  diff "$folder/$name.0" "$folder/$name.1" || failed=1
  [ ! -e "$folder/$name.0.svg" ] || cmp "$folder/$name.0.svg" "$folder/$name.1.svg" || failed=1
}

printf 'Dim c As NSColorQVX = NSColorQVX.redColor\nc.description\n' >"$folder/input"
same classes classes
same json classes --json
same member classes NSColorQVX.redComponent
same trace trace --all "$examples/exceptions.bas"
same repl repl
same docs docs --out FILE
same swatches swatches --out FILE
exit $failed
