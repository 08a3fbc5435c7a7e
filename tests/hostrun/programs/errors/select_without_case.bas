' wants 2 4:3: wanted 'Case' or 'End Select' for line 3, found 'Print'
Dim x As Integer
Select Case x
  Print 1
End Select
