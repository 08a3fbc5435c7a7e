' wants 2 3:9: wanted the end of the statement after it
Print "must not run"
Print 1 2
