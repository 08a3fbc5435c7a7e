' wants 2 4:10: argument 1 of Append wants Integer, found String
Print "must not run"
Dim a() As Integer
a.Append "x"
