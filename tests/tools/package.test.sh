#!/bin/bash
# What tools/package makes: packed twice it is the same, byte for byte; the signer is given every DLL, program and .msi;
# and under Wine, for each width, it is installed, called, upgraded, repaired and removed, after which nothing is left.
# What the installer writes for COM is what regsvr32 writes.
# It takes a minute, so it is not repeated for what it has passed before.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
cd "$ROOT"
trap 'echo "line $LINENO: $BASH_COMMAND"' ERR
work=$BUILD/demo/package
passed=$BUILD/demo/package.passed
inputs() {
  cat packaging/* tools/package tools/lib.sh tests/tools/package.test.sh examples/* cli/completion/* docs/*.md docs/reference/* ./*.md LICENSE \
    src/server/QorvaneMBomBill.idl standin/database/*.sql CMakeLists.txt "$BUILD"/x{64,86}/bin/{QorvaneMBomBill,ErpStandIn}.dll \
    "$BUILD"/x{64,86}/bin/{bomcall,dbsetup,tsqlsh}.exe | sha256sum
}
state=$(inputs)
if [[ $(cat "$passed" 2>/dev/null) == "$state" ]]; then
  echo "Nothing of it has changed since this test passed."
  exit
fi
PRESET=x86
runs_here
PRESET=package # a Wine prefix of its own
wine_env
# What a run that failed has left behind would be taken for what was there before.
if [[ ! -f $passed ]]; then
  wineserver -k 2>/dev/null || true
  rm -rf "$WINEPREFIX"
fi
rm -rf "$work" "$passed"
mkdir -p "$work"
tools/wine-prefix
version=$(project_version)
drive=$WINEPREFIX/drive_c

# ---- packed twice ----

export SOURCE_DATE_EPOCH=1767322980
tools/package --built "$work/first" >"$work/first.log" || { cat "$work/first.log"; die "the first packing"; }
# The second one signs, with a signer that adds nothing; in another folder, with other rights for new files.
cat >"$work/signer" <<'SIGNER'
#!/bin/bash
# signer LOG WORD -in FILE -out SIGNED
[[ $# == 6 && $2 == 'two words' && $3 == -in && $5 == -out ]] || exit 1
echo "${4##*/}" >>"$1"
cp "$4" "$6"
SIGNER
chmod +x "$work/signer"
(
  umask 077
  SIGN="'$work/signer' '$work/signed' 'two words'" tools/package --built "$work/second, with a longer name" >"$work/second.log"
) || { cat "$work/second.log"; die "the second packing"; }
names=(QorvaneMBomBill-"$version"-x{64,86}{.msi,.zip,-symbols.zip})
for name in "${names[@]}" SHA256SUMS; do
  cmp "$work/first/$name" "$work/second, with a longer name/$name" || die "packed twice, $name is not the same"
done
rm -rf "$work/second, with a longer name"
[[ $(ls "$work/first") == "$(printf '%s\n' "${names[@]}" SHA256SUMS | LC_ALL=C sort)" ]] || die "made: $(ls "$work/first")"
(cd "$work/first" && sha256sum --quiet -c SHA256SUMS) || die "SHA256SUMS is wrong"
expected=$(for arch in x64 x86; do
  printf '%s\n' QorvaneMBomBill.dll ErpStandIn.dll bomcall.exe dbsetup.exe tsqlsh.exe "QorvaneMBomBill-$version-$arch.msi"
done | sort)
[[ $(sort "$work/signed") == "$expected" ]] || die "the signer was given: $(sort "$work/signed")"

# A signer that fails, or writes nothing, ends it.
for bad in false true; do
  if SIGN=$bad tools/package --built "$work/unsigned" >/dev/null 2>&1; then die "signing with \"$bad\" was no failure"; fi
done
rm -rf "$work/unsigned"

# Linked twice, a DLL is the same as well. Its base address comes from the name that the linker is given, so that is the
# same, in a folder that looks like the build's.
for arch in x64 x86; do
  link=$(ninja -C "$BUILD/$arch" -t commands QorvaneMBomBill | tail -n 1)
  [[ $link == *' -o bin/QorvaneMBomBill.dll '* ]] || die "no command that links the DLL: $link"
  mkdir -p "$work/$arch"
  ln -s "$BUILD/$arch"/* "$work/$arch/"
  rm "$work/$arch/bin"
  mkdir "$work/$arch/bin"
  (cd "$work/$arch" && bash -c "${link/--out-implib,src\/server\//--out-implib,bin/}") || die "linking again"
  cmp "$work/$arch/bin/QorvaneMBomBill.dll" "$BUILD/$arch/bin/QorvaneMBomBill.dll" || die "linked twice, the DLL of $arch is not the same"
done

# ---- what is in it ----

for arch in x64 x86; do
  for name in "QorvaneMBomBill-$version-$arch"{,-symbols}; do (cd "$work" && cmake -E tar xf "first/$name.zip"); done
  stage=$work/QorvaneMBomBill-$version-$arch
  (cd "$stage" && sha256sum --quiet -c SHA256SUMS) || die "SHA256SUMS in the zip of $arch is wrong"
  [[ $(find "$stage" -type f ! -name SHA256SUMS | wc -l) == $(wc -l <"$stage/SHA256SUMS") ]] ||
    die "SHA256SUMS does not have all files of $arch"
  ! grep -q '@[A-Z]*@' "$stage/README.txt" || die "README.txt has a gap"
  grep -q "^QorvaneMBomBill $version for $arch" "$stage/README.txt" || die "README.txt does not say what it is of"
  # Every file that the READMEs name.
  for path in QorvaneMBomBill.dll bomcall.exe tsqlsh.exe dbsetup.exe standin/ErpStandIn.dll standin/database/schema.sql \
    standin/database/procedures.sql standin/database/factory.sql standin/database/ecn.sql standin/database/browsing.sql \
    sdk/QorvaneMBomBill.{tlb,idl} sdk/QorvaneMBomBill_{h.h,i.c} docs/{deployment,diagnostic-log,security,dialect,storage,CHANGELOG}.md \
    docs/reference/{README,BomUpdate,BomView,BOMImport,PPorderImort,CBomFunction,CBomCheck,CEcnInfo,BomInfo,clsMCustBOM}.md \
    docs/reference/{clsMBOMRule,clsReadUserDefined}.md examples/ListBoms.{vbs,js,cpp,bas,cs,ps1} examples/{list_boms.py,README.txt} completion/bomcall.{bash,ps1} LICENSE.txt THIRD-PARTY-NOTICES.txt; do
    [[ -s $stage/$path ]] || die "$path is missing in the zip of $arch"
  done
  # No path of this machine.
  ! grep -rlF "$ROOT" "$stage" || die "the files above have this folder's path in them"
  # Links lead to files of the package.
  while IFS=: read -r file link; do
    [[ -e ${file%/*}/${link%%#*} ]] || die "$file links to $link, which is not in the package"
  done < <(find "$stage" -name '*.md' -exec grep -o '](\([^) []*\))' {} + | sed 's/](\(.*\))/\1/' | grep -v ':http\|:#' || true)
  # The licences of what is linked in, and not their names alone.
  for text in 'GCC Runtime Library Exception ("Exception") is an additional' 'Niels Lohmann' 'University of Cincinnati' \
    'Boost Software License - Version 1.0' 'The author disclaims copyright' \
    'Copyright: 2009-2016 the mingw-w64 project'; do
    grep -qF "$text" "$stage/THIRD-PARTY-NOTICES.txt" || die "THIRD-PARTY-NOTICES.txt does not have: $text"
  done
  tool=x86_64-w64-mingw32
  if [[ $arch == x86 ]]; then tool=i686-w64-mingw32; fi
  for file in QorvaneMBomBill.dll bomcall.exe; do
    ! "$tool-nm" "$stage/$file" 2>/dev/null | grep . >/dev/null || die "$file of $arch has its symbols"
    "$tool-objdump" -s -j .gnu_debuglink "$stage/$file" | grep . >/dev/null || die "$file of $arch names no file of symbols"
  done
  "$tool-nm" -C "$stage-symbols/QorvaneMBomBill.dll.debug" | grep 'mbom::BomView::GetBomLdgInfo(' >/dev/null ||
    die "the symbols of $arch have no method of the component"
  for flag in DYNAMIC_BASE NX_COMPAT; do
    "$tool-objdump" -p "$stage/QorvaneMBomBill.dll" | grep "$flag" >/dev/null || die "packed, the DLL of $arch is not $flag any more"
  done
done

# ---- installed ----

# in_width ARCH PROGRAM ARG…: a program of Wine's own, in that width.
in_width() {
  local folder=system32
  if [[ $1 == x86 ]]; then folder=syswow64; fi
  "$(loader "$1")" "C:\\windows\\$folder\\$2.exe" "${@:3}" </dev/null 2>/dev/null
}
# installer ARCH ARG…: on Windows either width's program installs both; Wine's writes ProgIDs of the other width elsewhere.
installer() { in_width "$1" msiexec "${@:2}" /qn; }
new_of() { echo "Z:$work/first/QorvaneMBomBill-$version-$1.msi"; }
folder_of() { if [[ $1 == x64 ]]; then echo "$drive/Program Files/QorvaneMBomBill"; else echo "$drive/Program Files (x86)/QorvaneMBomBill"; fi; }
# classes: all that COM finds in both widths, one value a line, without the installer's own notes. The server writes the
# registry when it ends. HELPDIR is a folder, with or without a backslash at its end.
classes() {
  wineserver -k
  wineserver -w
  awk '
    /^\[/ { sub(/\] [0-9]+$/, "]"); key = $0; next }
    key ~ /^\[Software\\\\Classes\\\\/ && key !~ /^\[Software\\\\Classes\\\\Installer/ && !/^#/ && NF {
      if (key ~ /HELPDIR\]$/) sub(/\\\\"$/, "\"")
      print key $0
    }' "$WINEPREFIX/system.reg" | sort
}
# installed: what the list of installed programs says of ours, "NAME VERSION" a line.
installed() {
  local arch
  for arch in x64 x86; do in_width $arch reg query 'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall' /s; done | tr -d '\r' | awk '
    /^HKEY/ { name = "" }
    $1 == "DisplayName" { name = $3 " " $4 }
    $1 == "DisplayVersion" && name ~ /^QorvaneMBomBill/ { print name, $3 }' | sort -u
}
# Of the installer's own notes, too.
must_be_clean() {
  local arch left
  left=$(classes | diff "$work/before" - || true)
  ! grep -a -i 'QorvaneMBomBill\|8B976668-DF93-4A97-B223-0C165C507E42' "$WINEPREFIX/system.reg" "$WINEPREFIX/user.reg" ||
    die "line ${BASH_LINENO[0]}: the lines above are left in the registry"
  [[ ! $left ]] || die "line ${BASH_LINENO[0]}: not as before: $left"
  for arch in x64 x86; do
    [[ ! -e $(folder_of $arch) ]] || die "line ${BASH_LINENO[0]}: the folder of $arch is left"
  done
  [[ ! $(find "$drive/windows/Installer" -type f) ]] || die "line ${BASH_LINENO[0]}: packages are left in windows/Installer"
  tools/wine-prefix
}
# Wine's cscript registers a type library of its own when it is first run.
echo 'WScript.Echo "here"' >"$work/here.vbs"
for arch in x64 x86; do
  in_width $arch cscript //nologo "Z:$work/here.vbs" >/dev/null || die "cscript of $arch"
  # Under Wine the stand-in takes the place of Wine's ADO, for good.
  for undo in '' /u; do in_width $arch regsvr32 /s $undo "Z:$BUILD/$arch/bin/ErpStandIn.dll" || die "regsvr32 $undo"; done
done
classes >"$work/before"
(($(wc -l <"$work/before") > 1000)) || die "there are no classes in $WINEPREFIX/system.reg"
tools/wine-prefix

for arch in x64 x86; do
  stage=$work/QorvaneMBomBill-$version-$arch
  folder=$(folder_of $arch)
  dll=$folder/QorvaneMBomBill.dll

  # An older release: its files say so, and it has one that the newer one has not.
  cp -r "$stage" "$work/old-$arch"
  perl -0777 -pi -e 's/(\xBD\x04\xEF\xFE\0\0\x01\0).{16}/$1 . pack("v8", 9, 0, 0, 0, 9, 0, 0, 0)/se' \
    "$work/old-$arch"/*.dll "$work/old-$arch"/*.exe "$work/old-$arch/standin/ErpStandIn.dll"
  ! cmp -s "$work/old-$arch/QorvaneMBomBill.dll" "$stage/QorvaneMBomBill.dll" || die "no older version in the DLL"
  echo 'no longer needed' >"$work/old-$arch/examples/Gone.txt"
  packaging/msi "$work/old-$arch" $arch 0.9.0 "$work/old-$arch.msi" >"$work/old-$arch.log" 2>&1 || die "no older package: $(cat "$work/old-$arch.log")"
  installer $arch /i "Z:$work/old-$arch.msi" || die "the older release of $arch cannot be installed"
  [[ $(installed) == "QorvaneMBomBill ($arch) 0.9.0" ]] || die "installed: $(installed)"
  cmp "$work/old-$arch/QorvaneMBomBill.dll" "$dll" || die "the older DLL is not there"
  [[ -f $folder/examples/Gone.txt ]] || die "the older example is not there"

  # Upgraded.
  installer $arch /i "$(new_of $arch)" || die "the upgrade of $arch"
  [[ $(installed) == "QorvaneMBomBill ($arch) $version" ]] || die "after the upgrade: $(installed)"
  diff -r "$stage" "$folder" || die "the files of $arch are not those of the package"
  if installer $arch /i "Z:$work/old-$arch.msi"; then die "the older release of $arch was installed over the newer one"; fi
  [[ $(installed) == "QorvaneMBomBill ($arch) $version" ]] || die "after a refused downgrade: $(installed)"
  classes | comm -13 "$work/before" - >"$work/installed"
  tools/wine-prefix

  # Called.
  in_width $arch regsvr32 /s "$folder/standin/ErpStandIn.dll" || die "regsvr32 ErpStandIn.dll"
  database=$work/factory-$arch.db
  (cd "$folder/standin/database" &&
    "$(loader $arch)" ../../dbsetup.exe --new "Z:$database" schema.sql procedures.sql factory.sql ecn.sql browsing.sql) </dev/null >/dev/null || die "dbsetup"
  descriptor="Provider=Embedded;Data Source=Z:$database;User ID=16401;Language=en"
  boms=$("$(loader $arch)" "$folder/tsqlsh.exe" --tsv "Z:$database" 2>/dev/null <<<"SET NOCOUNT ON
SELECT FBOMNumber, CASE FStatus WHEN 0 THEN 'Not audited' ELSE 'Audited' END FROM ICBOM ORDER BY FInterID" | tr -d '\r' | tail -n +2 | grep . | tr '\t' ' ' | sort)
  (($(wc -l <<<"$boms") > 10)) || die "the database has no BOMs: $boms"
  # The error's source cannot be seen from JScript.
  said=$'CheckBomUsed: 0\nError: 80040E14'
  from=' from Microsoft OLE DB Provider for SQL Server'
  compiler=x86_64-w64-mingw32-g++-posix
  if [[ $arch == x86 ]]; then compiler=i686-w64-mingw32-g++-posix; fi
  "$compiler" -Wall -Wextra -Werror -municode -static -I "$folder/sdk" "$folder/examples/ListBoms.cpp" "$folder/sdk/QorvaneMBomBill_i.c" \
    -o "$work/ListBoms-$arch.exe" -lole32 -loleaut32 -luuid || die "ListBoms.cpp does not compile"
  examples() {
    in_width $arch cscript //nologo "Z:$folder/examples/ListBoms.vbs" "$descriptor" >"$work/vbs" || die "ListBoms.vbs of $arch"
    in_width $arch cscript //nologo "Z:$folder/examples/ListBoms.js" "$descriptor" | sed "s/^Error: [^\r]*/&$from/" >"$work/js" ||
      die "ListBoms.js of $arch"
    "$(loader $arch)" "$work/ListBoms-$arch.exe" "$descriptor" </dev/null >"$work/cpp" 2>/dev/null || die "ListBoms.exe of $arch"
    for language in vbs js cpp; do
      tr -d '\r' <"$work/$language" >"$work/said"
      [[ $(head -n -2 "$work/said" | sort) == "$boms" && $(tail -n 2 "$work/said") == "$said$from" ]] ||
        die "the example in $language for $arch says: $(cat "$work/said")"
    done
  }
  examples
  "$(loader $arch)" "$folder/bomcall.exe" --list BomUpdate </dev/null 2>/dev/null | grep '^  EndSave(' >/dev/null || die "bomcall of $arch"

  # Repaired: a file that was deleted, one that was spoiled, and what COM has lost.
  rm "$dll" "$folder/examples/ListBoms.vbs"
  echo spoiled >"$folder/sdk/QorvaneMBomBill.idl"
  in_width $arch reg delete 'HKLM\Software\Classes\QorvaneMBomBill.BomView' /f >/dev/null || die "reg delete"
  installer $arch /i "$(new_of $arch)" REINSTALL=ALL REINSTALLMODE=amus || die "the repair of $arch"
  diff -r "$stage" "$folder" || die "the repair of $arch left the differences above"
  examples
  in_width $arch regsvr32 /s /u "$folder/standin/ErpStandIn.dll" || die "regsvr32 /u ErpStandIn.dll"

  # Removed.
  installer $arch /x "$(new_of $arch)" || die "the removal of $arch"
  must_be_clean

  # Registered by itself, at the same place, the DLL writes the same.
  mkdir "$folder"
  cp "$stage/QorvaneMBomBill.dll" "$folder/"
  in_width $arch regsvr32 /s "$dll" || die "regsvr32 QorvaneMBomBill.dll"
  classes | comm -13 "$work/before" - >"$work/registered"
  tools/wine-prefix
  (($(grep -c '\\QorvaneMBomBill\.[^\\]*\]@=' "$work/registered") == 11)) || die "regsvr32 of $arch has not registered eleven classes"
  diff "$work/registered" "$work/installed" || die "the installer of $arch (>) does not write what regsvr32 (<) writes"
  in_width $arch regsvr32 /s /u "$dll" || die "regsvr32 /u QorvaneMBomBill.dll"
  rm -r "$folder"
  must_be_clean
done

# ---- both of them, and a part of one ----

transmode() { in_width "$1" cscript //nologo "Z:$work/transmode.vbs" | tr -d '\r' | grep -x 'TransMode 3' >/dev/null; }
echo 'WScript.Echo "TransMode " & CreateObject("QorvaneMBomBill.BomView").TransMode' >"$work/transmode.vbs"
library() { in_width x64 reg query 'HKLM\Software\Classes\TypeLib\{8B976668-DF93-4A97-B223-0C165C507E42}\1.0' /s | grep "$1" >/dev/null; }
for arch in x64 x86; do in_width $arch regsvr32 /s "Z:$BUILD/$arch/bin/ErpStandIn.dll" || die "regsvr32 ErpStandIn.dll"; done
installer x64 /i "Z:$work/old-x64.msi" 'INSTALLDIR=C:\Bom' ADDLOCAL=Component || die "x64 in a folder of its own"
[[ -f $drive/Bom/QorvaneMBomBill.dll ]] || die "INSTALLDIR has no effect"
installer x64 /i "$(new_of x64)" ADDLOCAL=Component || die "an upgrade in a folder of its own"
cmp "$work/QorvaneMBomBill-$version-x64/QorvaneMBomBill.dll" "$drive/Bom/QorvaneMBomBill.dll" || die "the upgrade is not where the older release was"
[[ $(cd "$drive/Bom" && find . -type f | sort) == "$(printf './%s\n' LICENSE.txt QorvaneMBomBill.dll README.txt SHA256SUMS THIRD-PARTY-NOTICES.txt)" ]] ||
  die "the component alone is: $(cd "$drive/Bom" && find . -type f)"
installer x86 /i "$(new_of x86)" || die "x86 beside it"
transmode x64 || die "x64 beside x86 does not work"
transmode x86 || die "x86 beside x64 does not work"
library win64 && library win32 && library 'BOM business component' || die "the type library is not that of both widths"
installer x64 /x "$(new_of x64)" || die "removing x64"
[[ ! -e $drive/Bom ]] || die "C:\\Bom is left"
! transmode x64 || die "x64 works without its files"
transmode x86 || die "x86 does not work without x64"
! library win64 && library win32 && library 'BOM business component' || die "the type library is not that of x86 alone"
installer x86 /x "$(new_of x86)" || die "removing x86"
for arch in x64 x86; do in_width $arch regsvr32 /s /u "Z:$BUILD/$arch/bin/ErpStandIn.dll" || die "regsvr32 /u ErpStandIn.dll"; done
must_be_clean

rm -rf "$work"
echo "$state" >"$passed"
