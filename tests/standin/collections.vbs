' A script's view of the collections: default members, For Each, arrays. It says PASS when it got to its end.
Option Explicit

Dim failures
failures = 0

Sub Expect(what, actual, expected)
  If VarType(actual) <> VarType(expected) Then
    failures = failures + 1
    WScript.Echo "FAIL " & what & ": type " & TypeName(actual) & ", not " & TypeName(expected)
  ElseIf actual <> expected Then
    failures = failures + 1
    WScript.Echo "FAIL " & what & ": " & actual & ", not " & expected
  End If
End Sub

Dim dictionary, key, joined
Set dictionary = CreateObject("ruvo10.Dictionary")
dictionary("First") = 1
dictionary("Second") = "two"
dictionary("FIRST") = 3
Expect "the default member", dictionary("first"), CInt(3)
Expect "a missing key", IsEmpty(dictionary("none")), True
joined = ""
For Each key In dictionary
  joined = joined & key & ";"
Next
Expect "For Each over a Dictionary", joined, "First;Second;"
joined = ""
For Each key In dictionary.Keys()
  joined = joined & key & ";"
Next
Expect "Keys", joined, "First;Second;"
Expect "Keys counts from 0", UBound(dictionary.Keys()), CLng(1)

Dim vector, element
Set vector = CreateObject("ruvo10.Vector")
vector.Add "a"
vector.Add dictionary
vector.Add 7
vector(3) = "c"
joined = ""
For Each element In vector
  If IsObject(element) Then joined = joined & element("Second") & ";" Else joined = joined & element & ";"
Next
Expect "For Each over a Vector", joined, "a;two;c;"
Expect "UBound", vector.UBound, CLng(3)
Set vector(1) = dictionary
Expect "an element put by reference", vector(1)("Second"), "two"

Dim format
Set format = CreateObject("ruvo10.Global")
Expect "FormatText", format.FormatText("%2-%1 %3", Array("a", 12)), "12-a %3"

Dim conn, rs, field
Set conn = CreateObject("ADODB.Connection")
conn.Open "Provider=Embedded;Data Source=:memory:collections"
Set rs = conn.Execute("SELECT 7 AS FFirst, 'text' AS FSecond")
Expect "rs(name)", rs("ffirst").Value, CLng(7)
Expect "rs(ordinal)", rs(1).Name, "FSecond"
Expect "rs.Fields(name)", rs.Fields("FSecond").Value, "text"
joined = ""
For Each field In rs.Fields
  joined = joined & field.Name & "=" & field.Value & ";"
Next
Expect "For Each over Fields", joined, "FFirst=7;FSecond=text;"
rs.MoveNext
Expect "EOF", rs.EOF, True

On Error Resume Next
element = vector(9)
Expect "the error's number", Err.Number, CLng(9)
Err.Clear
element = rs("FFirst").Value
Expect "ADO's error", Err.Number, CLng(3021)
Expect "its source", Err.Source, "ADODB.Field"
Err.Clear
element = rs.Fields("FNone").Value
Expect "an unknown field", Err.Number, CLng(3265)
Err.Clear
On Error GoTo 0

If failures = 0 Then WScript.Echo "PASS"
