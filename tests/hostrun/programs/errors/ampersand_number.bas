' wants 2 3:11: '&' does not work on String and Integer; Str(...) makes text of a number
Print "must not run"
Print "a" & 5
