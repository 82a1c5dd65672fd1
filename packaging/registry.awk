# What COM must find in the registry, read from the IDL, one a line, with tabs between: what it is (library, interface or
# class), name, GUID, version, description. Registration.cpp writes the same when the DLL registers itself;
# tests/tools/package.test.sh compares the two.
{
  line = $0
  sub(/\/\/.*/, "", line)
  if (match(line, /uuid\([^)]*\)/)) id = "{" toupper(substr(line, RSTART + 5, RLENGTH - 6)) "}"
  if (match(line, /version\([0-9.]*\)/)) version = substr(line, RSTART + 8, RLENGTH - 9)
  if (match(line, /helpstring\("[^"]*"\)/)) description = substr(line, RSTART + 12, RLENGTH - 14)
}
/^ *(library|dispinterface|coclass) / {
  kind = $1 == "coclass" ? "class" : $1 == "dispinterface" ? "interface" : "library"
  print kind "\t" $2 "\t" id "\t" version "\t" description
}
