' wants 2 3:11: wanted a number that an Integer can hold, found 3000000000
Print "must not run"
Print Chr(3000000000)
