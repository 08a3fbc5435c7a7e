#!/usr/bin/env bash
# tests/hostrun/programs/errors.sh HOSTRUN - programs that must be refused before they run.
#
# The first line of each program in errors/ is "' wants 2 LINE:COLUMN: TEXT": the beginning of what must be said behind the
# file's name. "hostrun check-syntax" says it of all in one process; every tenth program is run as well: the same must stand
# on stderr, and nothing on stdout.
set -u
hostrun=$1
stdout=$(mktemp)
trap 'rm -f "$stdout"' EXIT
cd "$(dirname "$0")/errors" || exit 1
failed=0
count=0
programs=(*.bas)

# says FILE TEXT: whether the text begins as the file's first line wants.
says() {
  local first
  IFS= read -r first <"$1"
  [[ "$2" == "$1:${first#"' wants 2 "}"* ]] && return
  printf '%s: wanted\n  %s\nfound\n  %s\n' "$1" "$1:${first#"' wants 2 "}" "$2"
  failed=1
}

declare -A said
while IFS= read -r line; do
  file=${line%%:*}
  [[ $line != *.bas:* || -n ${said[$file]+its} ]] || said[$file]=$line
done < <("$hostrun" check-syntax "${programs[@]}")
for file in "${programs[@]}"; do
  says "$file" "${said[$file]-nothing}"
  count=$((count + 1))
  [ $((count % 10)) = 0 ] || continue
  err=$("$hostrun" "$file" 2>&1 >"$stdout" </dev/null)
  status=$?
  [ $status = 2 ] || {
    echo "$file: wanted status 2, found $status"
    failed=1
  }
  says "$file" "$err"
  [ ! -s "$stdout" ] || {
    echo "$file: wanted nothing on stdout, found: $(head -n 1 "$stdout")"
    failed=1
  }
done
echo "$count programs"
[ $count -ge 10 ] || failed=1
exit $failed
