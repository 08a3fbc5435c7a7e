#!/usr/bin/env bash
# tests/whole/present/browser.sh HOSTRUN REFERENCE FOLDER - opens the reference in a real browser. Ends with 77 where there is
# none; screenshots are left in FOLDER.
set -euo pipefail
hostrun=$1
reference=$2
folder=$3
for program in chromium chromedriver python3; do
  if ! command -v "$program" >/dev/null; then
    echo "skipped: wanted $program, found none; tools/bootstrap --browser installs it"
    exit 77
  fi
done
mkdir -p "$folder"
"$hostrun" docs --descriptions "$reference" --out "$folder/reference.html"
exec python3 "$(dirname "$0")/browser.py" "$folder/reference.html" "$folder" "$(grep -c '^\[member ' "$reference")"
