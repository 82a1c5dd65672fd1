#!/bin/bash
# Every DLL and program of both widths says in its version resource which release it is of, what it is, and its own name;
# no company is named. The changelog has a section of it.
. "$(dirname "${BASH_SOURCE[0]}")/../../tools/lib.sh"
version=$(project_version)
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || die "the project's version is not major.minor.patch: $version"
grep -q "^## $version\b" "$ROOT/CHANGELOG.md" || die "CHANGELOG.md has no section of $version"
numbers=${version//./, }
status=0
complain() {
  echo "$*"
  status=1
}
for preset in x64 x86; do
  tool=x86_64-w64-mingw32-windres
  if [[ $preset == x86 ]]; then tool=i686-w64-mingw32-windres; fi
  for file in QorvaneMBomBill.dll ErpStandIn.dll bomcall.exe dbsetup.exe tsqlsh.exe demo.exe; do
    resource=$("$tool" -J coff -O rc "$BUILD/$preset/bin/$file") || die "$preset/$file has no resources that can be read"
    text() { sed -n "s/^ *VALUE \"$1\", \"\(.*\)\"\r\?\$/\1/p" <<<"$resource"; }
    for line in "FILEVERSION $numbers, 0" "PRODUCTVERSION $numbers, 0"; do
      grep -qx " *$line" <<<"$resource" || complain "$preset/$file: no line $line"
    done
    for name in FileVersion ProductVersion; do
      [[ $(text $name) == "$version.0" ]] || complain "$preset/$file: $name is \"$(text $name)\", not $version.0"
    done
    [[ $(text OriginalFilename) == "$file" ]] || complain "$preset/$file: OriginalFilename is \"$(text OriginalFilename)\""
    [[ $(text ProductName) == QorvaneMBomBill ]] || complain "$preset/$file: ProductName is \"$(text ProductName)\""
    [[ $(text FileDescription) == ?*' '?* ]] || complain "$preset/$file: FileDescription is \"$(text FileDescription)\""
    ! grep -qi 'CompanyName\|LegalCopyright\|LegalTrademarks' <<<"$resource" || complain "$preset/$file names a company"
  done
done
exit "$status"
