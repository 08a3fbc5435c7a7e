' wants 2 3:1: wanted a statement, found 'Goto': there are no labels
Print "must not run"
Goto start
