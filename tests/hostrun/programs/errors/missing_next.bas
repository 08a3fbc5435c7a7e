' wants 2 5:1: wanted 'Next' for line 3
Print "must not run"
For i As Integer = 1 To 2
Print i
