' wants 2 4:1: wanted a variable before '=', found the constant k
Print "must not run"
Const k = 1
k = 2
