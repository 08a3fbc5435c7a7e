' wants 2 3:10: wanted 'Then' after the condition, found the end of the line
Print "must not run"
If 1 = 1 
End If
