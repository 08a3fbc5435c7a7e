' wants 2 3:26: For Each wants an array, found Integer
Print "must not run"
For Each i As Integer In 5
Next
