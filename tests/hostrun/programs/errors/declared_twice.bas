' wants 2 4:5: wanted a new name, found X, which is declared in this block already
Print "must not run"
Dim x As Integer
Dim X As String
