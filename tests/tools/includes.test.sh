#!/bin/bash
# An include points to the same floor of the tree or to one below it. CONTRIBUTING.md has the rules as a table.
# tests/tools/includes.test.sh [TREE]: checks another tree.
set -euo pipefail
cd "${1:-$(dirname "${BASH_SOURCE[0]}")/../..}"

# allowed FOLDER REGEX…: sources below the folder include project headers that match one of these and no others.
bad=0
allowed() {
  local folder=$1 patterns found
  shift
  patterns=$(IFS='|' && echo "$*")
  found=$(grep -rnE '^#include "' --include='*.h' --include='*.cpp' "$folder" |
    grep -vE "#include \"(QorvaneMBomBill_h\.h|$folder/|$patterns)" || true)
  if [[ $found ]]; then
    printf 'What %s may not include:\n%s\n' "$folder" "$found"
    bad=1
  fi
}

allowed com 'com/'
allowed src/log 'com/'
allowed src/frame 'com/' 'src/log/'
allowed src/domain 'com/' 'src/frame/'
for class in bom view import ecn custbom; do allowed "src/$class" 'com/' 'src/frame/' 'src/domain/'; done
allowed src/server 'com/' 'src/(bom|view|import|ecn|custbom|log)/'
allowed odbc 'com/' 'tsql/(tsql|ShellTarget)\.h'
allowed standin 'com/' 'odbc/' 'tsql/(tsql|Fnv1a)\.h'
allowed cli 'com/' 'tsql/CharacterWidth\.h' 'src/frame/OutsideNames\.h'
allowed demo 'com/' 'cli/'
exit "$bad"
