' One of two clients, a 32-bit and a 64-bit one, that use a database file at the same time: client.vbs FILE NAME BOM.
' They wait for each other; then each saves its own BOM and counts, ROUNDS times, and says what it saw.
Option Explicit
Const ROUNDS = 40

Dim database, name, bomId, conn
database = "Provider=Embedded;Data Source=" & WScript.Arguments(0)
name = WScript.Arguments(1)
bomId = CLng(WScript.Arguments(2))
Set conn = CreateObject("ADODB.Connection")
conn.Open database

Function Value(sql)
  Value = conn.Execute(sql).Fields(0).Value
End Function

conn.Execute "INSERT INTO Clients (FName) VALUES ('" & name & "')"
Dim waited
Do While Value("SELECT COUNT(*) FROM Clients") < 2
  waited = waited + 1
  If waited > 600 Then
    WScript.Echo "FAIL the other client did not come"
    WScript.Quit 1
  End If
  WScript.Sleep 100
Loop

Dim host, bom, save, header, message, dsn, round, refused
Set host = CreateObject("ErpStandIn.Host")
Set bom = host.CreateObject("QorvaneMBomBill.BomUpdate")
Set save = CreateObject("ruvo10.Vector")
Set header = CreateObject("ruvo10.Dictionary")
header("FInterID") = bomId
header("FTransType") = 50
save.Add header
dsn = database & ";User ID=" & bomId & ";Now=2026-03-05 14:30:00;Language=en"
For round = 1 To ROUNDS
  If Not bom.EndSave(dsn, save, message) Then
    WScript.Echo "FAIL round " & round & ": " & message
    WScript.Quit 1
  End If
  conn.Execute "UPDATE Rounds SET FCount = FCount + 1"
  conn.Execute "UPDATE Clients SET FRounds = " & round & ", FOthers = (SELECT MAX(FRounds) FROM Clients WHERE FName <> '" & _
    name & "') WHERE FName = '" & name & "'"
Next
WScript.Echo "PASS"
