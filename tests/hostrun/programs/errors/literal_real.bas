' wants 2 3:22: wanted a number that an Integer can hold, found 1e+20; Int64 and Double hold more
Print "must not run"
Dim far As Integer = 1e20
