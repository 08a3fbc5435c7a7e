' wants 2 3:10: wanted a type, found NSColourQVX, which is none that this host knows
Print "must not run"
Dim c As NSColourQVX
