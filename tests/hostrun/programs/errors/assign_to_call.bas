' wants 2 3:1: wanted a variable, an element or a property before '=', found a value
Print "must not run"
Abs(1) = 2
