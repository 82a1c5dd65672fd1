' A script client: creates the component and the stand-in by ProgID, passes variants by reference, reads results by
' name, by default member and by For Each. It says PASS when it got to its end.
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

' ---- a database of its own ----

Dim database, conn
database = "Provider=Embedded;Data Source=:memory:script"
Set conn = CreateObject("ADODB.Connection")
conn.Open database
conn.Execute "CREATE TABLE ICBOM (FInterID int NOT NULL PRIMARY KEY, FBomNumber varchar(30), FItemID int, FBomType int, " & _
  "FStatus int, FUseStatus int, FOperatorID int, FEnterTime varchar(10), FCheckID int, FCheckDate datetime, " & _
  "FParentID int, FEcnInterID int)"
conn.Execute "CREATE TABLE ICBOMChild (FInterID int, FEntryID int, FUnitID int, FAuxQty decimal(28,10), " & _
  "FQty decimal(28,10), FBeginDay datetime, FEndDay datetime)"
conn.Execute "CREATE TABLE t_MeasureUnit (FItemID int, FCoefficient decimal(28,10), FScale decimal(28,10))"
conn.Execute "INSERT INTO ICBOM (FInterID, FBomNumber, FItemID, FBomType, FStatus, FUseStatus, FEcnInterID) VALUES " & _
  "(1, 'ONE', 100, 0, 0, 1072, NULL), (2, 'TWO', 100, 1, 0, 1072, 5)"
conn.Execute "INSERT INTO ICBOMChild (FInterID, FEntryID, FUnitID, FAuxQty, FQty) VALUES (1, 1, 7, 2.5, 0)"
conn.Execute "INSERT INTO t_MeasureUnit (FItemID, FCoefficient, FScale) VALUES (7, 12, NULL)"

Function Value(sql)
  Dim rs
  Set rs = conn.Execute(sql)
  Value = rs.Fields(0).Value
End Function

' ---- every class ----

Dim name
For Each name In Array("BomUpdate", "BomView", "BOMImport", "PPorderImort", "CBomFunction", "CBomCheck", "CEcnInfo", _
    "BomInfo", "clsMCustBOM", "clsMBOMRule", "clsReadUserDefined")
  Select Case name
    Case "BomView", "BomInfo", "clsMCustBOM", "clsMBOMRule"
      Expect name & ".TransMode", CreateObject("QorvaneMBomBill." & name).TransMode, CLng(3)
    Case Else
      Expect name & ".TransMode", CreateObject("QorvaneMBomBill." & name).TransMode, CLng(2)
  End Select
Next

' ---- the collections ----

Dim header, change, save
Set header = CreateObject("ruvo10.Dictionary")
header.Value("FInterID") = 1
header("ftranstype") = 0
Expect "Dictionary.Count", header.Count, CLng(2)
Expect "Dictionary default", header("FTRANSTYPE"), CInt(0)
Expect "Dictionary missing key", IsEmpty(header("no such key")), True
Expect "Dictionary stays", header.Count, CLng(2)
Dim key, keys
For Each key In header.Keys()
  keys = keys & key & ";"
Next
Expect "Dictionary.Keys", keys, "FInterID;ftranstype;"
Set save = CreateObject("ruvo10.Vector")
save.Add header
Expect "Vector.UBound", save.UBound, CLng(1)
Dim item, seen
For Each item In save
  seen = seen & item("FInterID")
Next
Expect "Vector For Each", seen, "1"

' ---- a save ----

Dim host, bom, message, dsn
Set host = CreateObject("ErpStandIn.Host")
Set bom = host.CreateObject("QorvaneMBomBill.BomUpdate")
dsn = database & ";User ID=16394;Now=2026-03-05 14:30:00;Language=en"

Set change = CreateObject("ruvo10.Dictionary")
change("UseStatusChange") = True
change("FItemID") = 100
save.Add change
message = "untouched"
Expect "BeginSave", bom.BeginSave(dsn, save, message), True
Expect "BeginSave's ReturnMsg", message, "untouched"
Expect "FUseStatus", Value("SELECT SUM(FUseStatus) FROM ICBOM"), CLng(2146)

Dim none
Expect "EndSave", bom.EndSave(dsn, save, none), True
Expect "EndSave's ReturnMsg", IsEmpty(none), True
Expect "FOperatorID", Value("SELECT FOperatorID FROM ICBOM WHERE FInterID = 1"), CLng(16394)
Expect "FEnterTime", Value("SELECT FEnterTime FROM ICBOM WHERE FInterID = 1"), "2026-03-05"
Expect "FQty", CDbl(Value("SELECT FQty FROM ICBOMChild WHERE FInterID = 1")), CDbl(30)

' ---- a refusal: in/out arguments are variants here ----

header.Value("FInterID") = 2
Expect "EndSave under change control", bom.EndSave(dsn, save, message), False
Expect "the reason", message, "This BOM was created by an engineering change or has passed one; " & _
  "it can be neither audited nor un-audited!"
Expect "SaveRetCode", save(1)("SaveRetCode"), CInt(99)

' ---- named wrongly, called wrongly ----

On Error Resume Next
bom.NoSuchMethod
Expect "an unknown member", Err.Number <> 0, True
Err.Clear
bom.EndSave dsn
Expect "too few arguments", Err.Number <> 0, True
Err.Clear
bom.UpdateIcBomStatus dsn, "a'b"
Expect "the provider's error", Hex(Err.Number), "80040E14"
Expect "its source", Err.Source, "Microsoft OLE DB Provider for SQL Server"
Err.Clear
On Error GoTo 0

Expect "UpdateIcBomStatus", bom.UpdateIcBomStatus(dsn, "ONE"), False
Expect "FStatus", Value("SELECT FStatus FROM ICBOM WHERE FInterID = 1"), CLng(1)

If failures = 0 Then WScript.Echo "PASS"
