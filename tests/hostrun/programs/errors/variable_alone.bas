' wants 2 4:1: wanted a statement, found the variable x alone
Print "must not run"
Dim x As Integer
x
