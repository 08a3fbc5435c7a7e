' wants 2 3:7: wanted a variable, a function or a class, found x, which is not declared
Print "must not run"
Print x
