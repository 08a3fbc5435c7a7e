' wants 2 3:1: wanted Exit Sub or Exit Function inside of a routine
Print "must not run"
Exit Sub
