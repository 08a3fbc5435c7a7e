' wants 2 3:8: wanted one upper bound: arrays have one dimension
Print "must not run"
Dim a(2, 3) As Integer
