' wants 2 4:7: wanted one index, found 2: arrays have one dimension
Print "must not run"
Dim a() As Integer
Print a(1, 2)
