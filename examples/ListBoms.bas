Attribute VB_Name = "ListBoms"
' Lists the BOMs of a database, asks whether the first one is in use, and shows how an error arrives. Call Main with a
' descriptor. For Visual Basic 6 and VBA; late-bound, so no reference is needed.
' Not tried yet: it was written by the documentation of Visual Basic, where no Windows was at hand.
Option Explicit

Public Sub Main(ByVal descriptor As String)
  Dim view As Object, bom As Object, first As Long
  Set view = CreateObject("QorvaneMBomBill.BomView")
  For Each bom In view.GetBomLdgInfo(descriptor)
    Debug.Print bom.Value("FBOMNumber") & " " & bom.Value("FStatus")
    If first = 0 Then first = bom.Value("FInterID")
  Next

  ' strInfo comes back changed where there is something to say.
  Dim update As Object, info As String
  Set update = CreateObject("QorvaneMBomBill.BomUpdate")
  Debug.Print "CheckBomUsed: " & update.CheckBomUsed(descriptor, first, info)

  On Error Resume Next
  view.GetBomLdgInfo descriptor, "no condition"
  Debug.Print "Error: " & Hex(Err.Number) & " from " & Err.Source
End Sub
