' wants 2 4:7: wanted an array or a function before '(', found i, a variable of type Integer
Print "must not run"
Dim i As Integer
Print i(1)
