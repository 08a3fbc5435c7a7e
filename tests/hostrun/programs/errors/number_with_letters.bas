' wants 2 3:8: wanted the end of the number
Print "must not run"
Print 1abc
