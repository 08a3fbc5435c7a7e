' wants 2 8:1: wanted 'End If' for line 3, found the end of the program; Else If in line 5 begins an If of its own, ElseIf does not
Dim x As Integer
If x = 1 Then
  Print 1
Else If x = 2 Then
  Print 2
End If
