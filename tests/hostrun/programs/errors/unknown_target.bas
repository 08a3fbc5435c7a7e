' wants 2 3:1: wanted a variable before '=', found x
Print "must not run"
x = 1
