' wants 2 3:9: wanted the end of the statement, found '2'
Print "must not run"
Print 1 2
