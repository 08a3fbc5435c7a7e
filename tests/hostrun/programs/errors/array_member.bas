' wants 2 4:9: wanted a member of an array, found Size
Print "must not run"
Dim a() As Integer
Print a.Size
