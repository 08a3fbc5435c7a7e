' wants 2 5:1: wanted 'End Try' for line 3
Print "must not run"
Try
Print 1
