#!/bin/bash
# The stages of the engine know only what comes before them: each folder of tsql/ includes only folders further down,
# nothing else of the project, and the rest of the project sees only the headers at its top.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"

# check ROOT: prints each include that breaks a rule, and fails if there is one.
check() {
  (cd "$1" && find com src odbc standin cli demo bench tsql -type f \( -name '*.h' -o -name '*.cpp' \) -exec \
    grep -HE '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' {} + 2>/dev/null) | awk -F: '
    BEGIN {
      count = split("values=1 sqlite=2 syntax=2 catalog=3 functions=4 bind=4 emit=5 compile=6 run=7 shell=8", list, " ")
      for (i = 1; i <= count; i++) { split(list[i], pair, "="); floor[pair[1]] = pair[2] }
    }
    function wrong(why) { print $1 ": " included ": " why; bad = 1 }
    # The folder within tsql/, "" for the files at its top.
    function folder(path, parts) { return split(path, parts, "/") > 2 ? parts[2] : "" }
    {
      lines++
      included = $2
      sub(/^[^"]*"/, "", included)
      sub(/".*/, "", included)
      isEngine = $1 ~ /^tsql\//
      isUsed = included ~ /^tsql\//
      if (!isEngine && !isUsed) next
      if (!isEngine) {
        isPublic = included == "tsql/tsql.h" || included == "tsql/Script.h" || included == "tsql/ShellTarget.h" || included == "tsql/CharacterWidth.h" || included == "tsql/Fnv1a.h"
        if (!isPublic) wrong("not a header for users of the engine")
        next
      }
      seen++
      if (!isUsed) { wrong("not from the root of the project, or not of the engine"); next }
      from = folder($1)
      to = folder(included)
      if (from != "" && !(from in floor)) { wrong("the folder " from " has no floor"); next }
      if (included == "tsql/tsql.h" || included == "tsql/Fnv1a.h" || from == to) next
      if (to == "" ? from != "shell" : !(to in floor)) wrong("no floor below")
      else if (to != "" && (from == "" || floor[to] >= floor[from])) wrong(from " rests on " to)
    }
    END {
      if (seen < 100) { print "only " seen + 0 " includes found in tsql/"; bad = 1 }
      exit bad
    }'
}

check "$ROOT" || die "see the includes above"

# The check itself: each of these must be refused.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$ROOT/tsql" "$work/tsql"
mkdir "$work"/{com,src,odbc,standin,cli,demo,bench}
check "$work" || die "a copy of the engine was refused"
# refuses FILE INCLUDED
refuses() {
  local kept=
  if [[ -f $work/$1 ]]; then kept=$(cat "$work/$1"); fi
  echo "#include \"$2\"" >>"$work/$1"
  ! check "$work" >/dev/null || die "$1 may include $2"
  if [[ $kept ]]; then echo "$kept" >"$work/$1"; else rm "$work/$1"; fi
}
refuses tsql/values/Types.h tsql/sqlite/Connection.h
refuses tsql/syntax/Lexer.cpp tsql/sqlite/Connection.h
refuses tsql/bind/Binder.cpp tsql/functions/FunctionNames.h
refuses tsql/functions/Functions.cpp tsql/bind/BoundTree.h
refuses tsql/emit/Emitter.h tsql/compile/Planner.h
refuses tsql/compile/Compiler.cpp tsql/run/RunningUnit.h
refuses tsql/run/Session.cpp com/Variant.h
refuses tsql/run/Session.cpp RunningUnit.h
refuses tsql/run/Session.cpp tsql/Script.h
refuses tsql/Script.cpp tsql/values/Types.h
refuses cli/Any.cpp tsql/values/Types.h
check "$work" || die "the copy is not as it was"
echo PASS
