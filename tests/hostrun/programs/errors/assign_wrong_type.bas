' wants 2 3:18: x wants Integer, found String
Print "must not run"
Dim x As Integer="text"
