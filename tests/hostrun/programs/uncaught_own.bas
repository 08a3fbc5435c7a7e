' wants 1   in Fail, called from line 9
Function Fail As Integer
  Raise New RuntimeException("Own", 1)
End Function
Sub Middle
  Try
    Print "in Middle"
  Finally
    Print Fail
  End Try
End Sub
Middle
