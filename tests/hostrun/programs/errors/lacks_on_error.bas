' wants 2 3:1: wanted a statement, found 'On': errors are exceptions; use Try and Catch
Print "must not run"
On Error Resume Next
