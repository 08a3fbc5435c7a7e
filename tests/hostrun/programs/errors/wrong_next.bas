' wants 2 4:6: wanted 'i', the variable of For in line 3, found 'j'
Print "must not run"
For i As Integer = 1 To 2
Next j
