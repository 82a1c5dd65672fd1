#!/bin/bash
# The demo's stories: no line is longer than a terminal's, nothing in a table is cut, and each command that they show does,
# when it is pasted in a shell, what the story says.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
tools/wine-prepare --built
FOLDER=$(mktemp -d "$BUILD/demo/stories.XXXXXX")
export FOLDER
trap 'rm -rf "$FOLDER"' EXIT
cat >"$FOLDER/runner" <<END
#!/bin/bash
exec '$ROOT/tools/wine-exec' '$PRESET' '$BUILD/$PRESET/bin/'"\$1".exe "\${@:2}"
END
chmod +x "$FOLDER/runner"
export RUNNER=$FOLDER/runner
unset COLUMNS SERVER STORY TRACE

story=$FOLDER/story.txt
demo/run >"$story" </dev/null || die "the demo failed: $(tail -n 3 "$story")"
longest=$(wc -L <"$story")
((longest <= 100)) || die "a line of the stories has $longest columns"
# A line of "…" alone says that a command prints more.
! grep -v '^ *…$' "$story" | grep '…' || die "the lines above are cut"
STORY=2 COLUMNS=140 demo/run >"$FOLDER/second.txt" </dev/null || die "the second story failed"
# The headings say which number tells a story alone.
headings=$(grep -o '^[0-9.]* [A-Z].*' "$FOLDER/second.txt")
[[ $headings == "$(grep '^2\.' "$story")" && $(head -n 1 <<<"$headings") == 2.1.* ]] || die "story 2 has the chapters $headings"
[[ $(grep -o '^[1-9]\.1\.' "$story") == "$(printf '%s\n' {1..6}.1.)" ]] || die "not six stories in $story"
longest=$(wc -L <"$FOLDER/second.txt")
((longest > 100 && longest <= 140)) || die "on a terminal of 140 columns the longest line has $longest"

# run COMMAND SHOWN: pastes the command and compares what it prints, whatever the lines and blanks.
count=0
run() {
  local shown=$2 printed
  printed=$(bash -c "$1" </dev/null 2>&1) || die "failed: $1: $printed"
  count=$((count + 1))
  # What the ERP's other programs do is not shown.
  if [[ $1 == demo/sql* ]]; then return; fi
  printed=${printed//[[:space:]]/}
  shown=${shown//[[:space:]]/}
  if [[ $shown == *…* ]]; then
    [[ $shown == *… && $printed == "${shown%…}"* && $printed != "${shown%…}" ]] || die "$1 prints: $printed"
  else
    # The rules of a table are as long as its widest cell, which may be broken in the story.
    [[ ${printed//-/} == "${shown//-/}" ]] || die "$1 prints: $printed, the story says: $shown"
  fi
}
# A command goes on to the next line until it is whole; what it prints goes on to an empty line. A message may end with
# one, which is no loss.
demo/fresh
command=
shown=
state=prose
while IFS= read -r line; do
  case $state in
    prose)
      if [[ $line != '  $ '* ]]; then continue; fi
      command=${line#'  $ '}
      state=command
      ;;
    command)
      if [[ $command == *\\ ]] || ! bash -nc "$command" 2>/dev/null; then
        command+=$'\n'$line
      elif [[ $line ]]; then
        shown+=$line
        state=output
      else
        run "$command" ''
        state=prose
      fi
      ;;
    output)
      if [[ $line == '    '* ]]; then
        shown+=$line
      else
        run "$command" "$shown"
        shown=
        state=prose
      fi
      ;;
  esac
done <"$story"
((count > 60)) || die "only $count commands were found"
