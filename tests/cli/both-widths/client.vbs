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
Dim asked
asked = 0
' Wine's script host can neither sleep nor tell how much time has passed.
Do While Value("SELECT COUNT(*) FROM Clients") < 2
  asked = asked + 1
  If asked > 100000 Then
    WScript.Echo "FAIL the other client did not come"
    WScript.Quit 1
  End If
Loop

Dim host, bom, save, saved, header, message, dsn, round
Set host = CreateObject("ErpStandIn.Host")
Set bom = host.CreateObject("QorvaneMBomBill.BomUpdate")
Set save = CreateObject("ruvo10.Vector")
Set header = CreateObject("ruvo10.Dictionary")
header("FInterID") = bomId
header("FTransType") = 50
save.Add header
dsn = database & ";User ID=" & bomId & ";Now=2026-03-05 14:30:00;Language=en"
Sub Must(what)
  If Err.Number = 0 Then Exit Sub
  WScript.Echo "FAIL round " & round & ", " & what & ": " & Hex(Err.Number) & " " & Err.Description
  WScript.Quit 1
End Sub

' Wine's script host is silent about an error that nobody has handled.
On Error Resume Next
For round = 1 To ROUNDS
  saved = bom.EndSave(dsn, save, message)
  Must "EndSave"
  If Not saved Then
    WScript.Echo "FAIL round " & round & ": " & message
    WScript.Quit 1
  End If
  conn.Execute "UPDATE Rounds SET FCount = FCount + 1"
  Must "Rounds"
  conn.Execute "UPDATE Clients SET FRounds = " & round & ", FOthers = (SELECT MAX(FRounds) FROM Clients WHERE FName <> '" & _
    name & "') WHERE FName = '" & name & "'"
  Must "Clients"
Next
WScript.Echo "PASS"
