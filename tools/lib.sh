# shellcheck shell=bash
# Sourced by the scripts in this directory: where things are, how a step is shown, how Wine is called.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd -P)
BUILD=$ROOT/build
LOGS=$BUILD/logs
# The build whose Windows programs are run.
PRESET=${PRESET:-x64}
# The test programs of x64-debug.
DEBUG_TESTS='com_tests com_memory_tests component_tests standin_tests'
mkdir -p "$LOGS"

die() {
  echo "${0##*/}: $*" >&2
  exit 1
}

# Microseconds; EPOCHREALTIME has the locale's decimal point.
now() { echo "${EPOCHREALTIME/[.,]/}"; }

seconds_since() {
  local us=$(($(now) - $1))
  printf '%d.%d s' $((us / 1000000)) $((us / 100000 % 10))
}

log_of() { echo "$LOGS/$(tr -cs 'A-Za-z0-9_.' - <<<"$1" | sed 's/^-*//; s/-*$//').log"; }

# step TEXT COMMAND…: runs the command quietly and says how long it took; the log's end is shown if it fails.
# The command must be a program: "set -e" does not hold inside a function that is called so.
step() {
  local text=$1 log start status=0
  shift
  log=$(log_of "$text")
  printf '%s ... ' "$text"
  start=$(now)
  "$@" </dev/null >"$log" 2>&1 || status=$?
  if ((status == 0)); then
    seconds_since "$start"
    echo
  else
    printf 'FAILED after %s (exit code %d)\n' "$(seconds_since "$start")" "$status"
    tail -n 40 "$log"
    echo "The whole log: $log"
  fi
  return "$status"
}

# lock NAME: waits until no other script holds the lock; it is held until this script ends.
lock() {
  local fd
  exec {fd}>"$BUILD/$1.lock"
  flock "$fd"
}

# Runs a program with nothing of this shell open: a daemon that kept a pipe of ours would hang its reader.
detached() (
  for fd in "/proc/$BASHPID/fd"/*; do
    fd=${fd##*/}
    if ((fd > 2)); then exec {fd}>&-; fi
  done
  exec "$@"
) </dev/null >/dev/null 2>&1

wine_env() {
  WINE=$(loader "$PRESET")
  [[ $WINE ]] || die "Wine is missing: run tools/setup"
  # The prefix in which the build's DLLs are registered. The two releases share one, as they would a Windows: each
  # width has its own view of the registry there.
  WINEPREFIX=$BUILD/wine
  if [[ $PRESET != x64 && $PRESET != x86 ]]; then WINEPREFIX+=-$PRESET; fi
  export WINEPREFIX WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
  # No offers to download Mono and Gecko. No explorer.exe either: it would make a desktop for the first window, and
  # without a display the program that wants one waits 10 s for it.
  export WINEDLLOVERRIDES='mscoree,mshtml,explorer.exe='
  unset DISPLAY WAYLAND_DISPLAY
  # A BSTR is freed when it is freed, so that the tests can count what is left.
  export OANOCACHE=1
  # Wine takes code page and language from here; they must not depend on who runs it.
  export LC_ALL=C.UTF-8
}

# Wine runs 32-bit programs if the package wine32 is there.
have_wine32() { [[ -x /usr/lib/wine/wine ]]; }

# loader ARCH: Wine's loader for programs of that width, and not Debian's wrapper, which complains about the 32-bit one.
# Either starts programs of the other width too, but by way of a third program: that takes half a second more, and now
# and then it ends with 1 and has started nothing.
loader() {
  if [[ $1 == x86 ]] && have_wine32; then
    echo /usr/lib/wine/wine
  elif [[ -x /usr/lib/wine/wine64 ]] || command -v wine64 wine >/dev/null; then
    echo "$ROOT/tools/wine64"
  fi
}

# Ends with exit code 77, which test runners know as "skipped", if this machine cannot run the build's programs.
runs_here() {
  if [[ $PRESET == x86 ]] && ! have_wine32; then
    echo "${0##*/}: skipped: 32-bit programs do not run here: $(cat "$BUILD/no-wine32" 2>/dev/null || echo "the package wine32 is missing")" >&2
    exit 77
  fi
}

# program_file NAME: a program of the build, with or without ".exe"; a path, or the name of a program of Wine's own, as it is.
program_file() {
  local file
  if [[ $1 == */* ]]; then
    [[ -f $1 ]] || die "no such program: $1"
  else
    for file in "$BUILD/$PRESET/bin/$1" "$BUILD/$PRESET/bin/$1.exe"; do
      if [[ -f $file ]]; then echo "$file" && return; fi
    done
  fi
  echo "$1"
}

# in_prefix PROGRAM: a program of Wine's own in the width of the build. A 32-bit one lies where Windows has it.
in_prefix() {
  local name=${1%.exe}
  if [[ $PRESET == x86 && $1 != */* && $1 != *\\* && -f $WINEPREFIX/drive_c/windows/syswow64/$name.exe ]]; then
    echo "C:\\windows\\syswow64\\$name.exe"
  else
    echo "$1"
  fi
}

# server_descriptor SERVER: the stand-in's descriptor for a connection string of ODBC, or for one of its own. Everything in
# the database is dropped for a test or a story, so its name must say that it is there for that.
server_descriptor() {
  local descriptor=$1 database
  [[ $descriptor ]] || die "SERVER='DRIVER={FreeTDS};Server=...;Port=...;UID=...;PWD=...;Database=...' is missing"
  if [[ $descriptor != Provider=* ]]; then descriptor="Provider=ODBC;Connection={$descriptor}"; fi
  database=$(sed -n 's/.*\(Database\|Data Source\|Initial Catalog\)=\([^;}]*\).*/\2/Ip' <<<"$descriptor")
  [[ ${database,,} == *scratch* || ${database,,} == *test* ]] ||
    die "the name of the database must have \"scratch\" or \"test\" in it, for all that it holds is dropped"
  echo "$descriptor"
}

# The version of everything that is built here.
project_version() { sed -n 's/^project(.* VERSION \([0-9.]*\).*/\1/p' "$ROOT/CMakeLists.txt"; }

# All C++ sources; by find and not by git, so that an unpacked archive is checked too.
sources() {
  (cd "$ROOT" && find com src tsql odbc standin cli demo examples tests bench -type f \( -name '*.h' -o -name '*.cpp' \) 2>/dev/null | sort)
}
