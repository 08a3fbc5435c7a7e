' wants 2 3:9: wanted a class, found Nothing
Print "must not run"
Var c = New Nothing
