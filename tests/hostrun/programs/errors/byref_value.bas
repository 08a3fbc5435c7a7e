' wants 2 3:32: argument 1 (white) of getWhite wants a variable of type Double, found a value that is no variable
Print "must not run"
NSColorQVX.whiteColor.getWhite(1.0)
