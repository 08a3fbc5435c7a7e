' Try, Catch, Finally and Raise.
Sub Fail(message As String)
  Raise New UnsupportedOperationException(message, 3)
End Sub

Function Order As String
  Try
    Return "value of Return"
  Finally
    Print "Finally before Return leaves"
  End Try
End Function

Try
  Fail "first"
Catch e As NilObjectException
  Print "not this one"
Catch e As UnsupportedOperationException
  Print "caught", e.Message, e.ErrorNumber
Finally
  Print "Finally"
End Try

Try
  Try
    Fail "inner"
  Finally
    Print "Finally on the way out"
  End Try
Catch e As RuntimeException
  Print "by its base class:", e.Message, e IsA UnsupportedOperationException
End Try

Try
  Try
    Fail "again"
  Catch e
    Raise e
  End Try
Catch same
  Print "raised again:", same.Message
End Try
Print Order

For i As Integer = 1 To 3
  Try
    If i = 2 Then Continue
    Print i
  Finally
    Print "after", i
  End Try
Next

Try
  Dim e As New RuntimeException
  e.Message = "set later"
  e.ErrorNumber = 12
  Raise e
Catch e As RuntimeException
  Print e.Message, e.ErrorNumber
End Try

' What a call writes by reference before it raises stays written.
Dim w As Double = 5
Try
  NSColorQVX.redColor.getWhite w
Catch e As NSExceptionQVX
  Print "white", w
End Try
