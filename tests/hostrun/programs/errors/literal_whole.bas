' wants 2 3:7: wanted a whole number of at most 9223372036854775807, found 99999999999999999999; with .0 it is a Double
Print "must not run"
Print 99999999999999999999
