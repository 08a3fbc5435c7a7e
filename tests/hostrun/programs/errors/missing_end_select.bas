' wants 2 5:1: wanted 'End Select' for line 3
Print "must not run"
Select Case 1
Case 1
