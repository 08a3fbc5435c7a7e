' wants 2 3:20: wanted a number that an Integer can hold, found 99999999999; Int64 and Double hold more
Print "must not run"
Dim i As Integer = 99999999999
