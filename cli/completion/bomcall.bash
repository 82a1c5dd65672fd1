# shellcheck shell=bash
# Completion of bomcall for bash. Source it from ~/.bashrc, or install it as
# /usr/share/bash-completion/completions/bomcall.

# The classes with their methods, a line each, as bomcall lists them; asked for once a shell.
_bomcall_methods() {
  if [[ ! ${_bomcall_known-} ]]; then
    _bomcall_known=$(bomcall --list 2>/dev/null </dev/null | tr -d '\r' |
      awk '/^[A-Za-z]/ { class = $1 } /^  / { split($1, name, "("); print class "." name[1] }')
  fi
  printf '%s\n' "$_bomcall_known"
}

# The parameters of a method, as NAME=.
_bomcall_parameters() {
  bomcall --help "$1" 2>/dev/null </dev/null | tr -d '\r' | sed -n 's/^  [0-9]*  \([^:]*\):.*/\1=/p'
}

_bomcall() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} target= i
  local options='--list --check --help --version --batch --keep-going --dsn --connection --lang --encoding --json --csv
    --vertical --columns --fail-if --trace --no-host'
  COMPREPLY=()
  case $before in
  --lang) mapfile -t COMPREPLY < <(compgen -W 'chs cht en' -- "$word") && return ;;
  --encoding) mapfile -t COMPREPLY < <(compgen -W 'utf-8 gbk' -- "$word") && return ;;
  --batch) mapfile -t COMPREPLY < <(compgen -f -- "$word") && return ;;
  # NAME=@FILE: bash takes "=" and "@" for ends of words.
  *@) mapfile -t COMPREPLY < <(compgen -f -- "$word") && return ;;
  --list) mapfile -t COMPREPLY < <(compgen -W "$(_bomcall_methods | cut -d . -f 1 | sort -u)" -- "$word") && return ;;
  --help | -h) mapfile -t COMPREPLY < <(compgen -W "$(_bomcall_methods)" -- "$word") && return ;;
  bom) mapfile -t COMPREPLY < <(compgen -W 'tree where-used diff check cost-lines' -- "$word") && return ;;
  esac
  for ((i = 1; i < COMP_CWORD; ++i)); do
    if [[ ${COMP_WORDS[i]} == [A-Za-z]*.* || ${COMP_WORDS[i]} == bom ]]; then target=${COMP_WORDS[i]}; fi
  done
  if [[ $word == -* ]]; then
    if [[ $target == bom ]]; then options+=' --depth --qty --dot --html --top'; fi
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ ! $target ]]; then
    mapfile -t COMPREPLY < <(compgen -W "bom $(_bomcall_methods)" -- "$word")
  elif [[ $target != bom ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_bomcall_parameters "$target")" -- "$word")
    # What follows the "=" is typed without a blank.
    if ((${#COMPREPLY[@]} == 1)); then compopt -o nospace 2>/dev/null; fi
  fi
  return 0
}

complete -o bashdefault -F _bomcall bomcall bomcall.exe
