' wants 2 3:9: wanted a class, found _Array
Print "must not run"
Var a = New _Array
