' wants 2 3:1: wanted a variable before '=', found totl, which is not declared as one; did you mean total?
Dim total As Integer
totl = 1
