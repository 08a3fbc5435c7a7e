' wants 2 3:11: wanted an expression, found the end of the line
Print "must not run"
Print 1 + 
