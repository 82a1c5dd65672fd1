' Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives:
'   cscript //nologo ListBoms.vbs "DESCRIPTOR"
Option Explicit

Dim descriptor
descriptor = WScript.Arguments(0)

Dim view, bom, first
Set view = CreateObject("QorvaneMBomBill.BomView")
For Each bom In view.GetBomLdgInfo(descriptor)
  WScript.Echo bom("FBOMNumber") & " " & bom("FStatus")
  If IsEmpty(first) Then first = bom("FInterID")
Next

' strInfo comes back changed where there is something to say.
Dim update, info
Set update = CreateObject("QorvaneMBomBill.BomUpdate")
WScript.Echo "CheckBomUsed: " & update.CheckBomUsed(descriptor, first, info)

On Error Resume Next
view.GetBomLdgInfo descriptor, "no condition"
WScript.Echo "Error: " & Hex(Err.Number) & " from " & Err.Source
