#!/usr/bin/env bash
# tests/hostrun/programs/errors.sh HOSTRUN - programs that must be refused before they run.
#
# The first line of each program in errors/ is "' wants 2 LINE:COLUMN: TEXT": the beginning of what stderr must say
# behind the file's name. Nothing may have run: stdout stays empty.
set -u
hostrun=$1
stdout=$(mktemp)
trap 'rm -f "$stdout"' EXIT
cd "$(dirname "$0")/errors" || exit 1
failed=0
count=0
for file in *.bas; do
  count=$((count + 1))
  IFS= read -r first <"$file"
  wanted="$file:${first#"' wants 2 "}"
  err=$("$hostrun" "$file" 2>&1 >"$stdout" </dev/null)
  status=$?
  if [ "$status" != 2 ]; then
    echo "$file: wanted status 2, found $status"
    failed=1
  fi
  if [[ "$err" != "$wanted"* ]]; then
    printf '%s: wanted\n  %s\nfound\n  %s\n' "$file" "$wanted" "$err"
    failed=1
  fi
  if [ -s "$stdout" ]; then
    echo "$file: wanted nothing on stdout, found: $(head -n 1 "$stdout")"
    failed=1
  fi
done
echo "$count programs"
[ "$count" -gt 0 ] || failed=1
exit $failed
