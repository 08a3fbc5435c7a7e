' wants 2 4:5: the assignment wants String, found Integer
Print "must not run"
Dim s As String
s = 1
