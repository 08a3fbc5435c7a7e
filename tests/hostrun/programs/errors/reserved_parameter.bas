' wants 2 2:10: wanted a parameter's name, found 'True'
Sub Fine(True As Integer)
End Sub
