' wants 2 5:1: wanted 'End If' for line 3, found the end of the program
Print "must not run"
If 1 = 1 Then
Print 1
