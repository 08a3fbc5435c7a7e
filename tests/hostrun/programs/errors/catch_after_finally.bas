' wants 2 6:1: wanted 'End Try' for line 3, found 'Catch'
Print "must not run"
Try
  Print 1
Finally
Catch
End Try
